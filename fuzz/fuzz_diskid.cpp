// fuzz_diskid.cpp - the disk identification file reader (DiskIdFile). The first byte picks the
// disk the installer expects (0 to 25); the rest becomes that disk's identification file
// ("A.KORV" ...) in a scratch source directory. Boxes are silenced; the result must be a flag.
#include "fuzz/fuzz_support.h"

#include "installer/inst.h"
#include "lists/ilst.h"

#include <stdio.h>
#include <stdlib.h>

static InstallState *state;

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  state = (InstallState *)calloc(1, sizeof *state);
  snprintf(state->source_path, sizeof state->source_path, "%s", fuzz_scratch_dir());
  snprintf(state->target_path, sizeof state->target_path, "%s", fuzz_scratch_dir());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  current_disk = (int16_t)(data[0] % ILST_DISKS_MAX);
  char name[ILST_DISK_ID_NAME];
  ilst_disk_id_name((uint16_t)current_disk, name);
  char file[KX_PATH + 16];
  snprintf(file, sizeof file, "%s%s", state->source_path, name);
  fuzz_write_file(file, data + 1, size - 1);
  Flag ok = DiskIdFile(state);
  FUZZ_CHECK(ok == 0 || ok == 1, "DiskIdFile returned %d", ok);
  remove(file);
  return 0;
}

// shl_host.cpp - the shell seam of the native build. The one link object lives in memory; a
// saved shortcut is a small text file:
//   KORVEX-SHORTCUT
//   target=...
//   description=...
//   directory=...
// (a field that was never set is left out). Every seam call is traced for the tests.
#include "common/st.h"
#include "platform/shl.h"

#include <stdio.h>
#include <string.h>

namespace {

const char MAGIC[] = "KORVEX-SHORTCUT";
enum { TRACE_SIZE = 4096 };

struct FakeLink {
  Flag have_target, have_description, have_directory;
  char target[KX_PATH];
  char description[KX_PATH];
  char directory[KX_PATH];
};

FakeLink link;
Flag link_held, persist_held;
int16_t fail_steps;
int16_t system_kind = SHL_SYSTEM_NT;
char trace[TRACE_SIZE];
int32_t notify_count;

void trace_word(const char *word) {
  size_t used = strlen(trace);
  size_t n = strlen(word);
  if (used + n + 1 >= TRACE_SIZE) return;
  memcpy(trace + used, word, n);
  trace[used + n] = ' ';
  trace[used + n + 1] = 0;
}

// Reads a saved shortcut; 0 when the file is missing or not one of ours.
Flag read_fake(const char *file, FakeLink *into) {
  FILE *f = fopen(file, "rb");
  if (!f) return 0;
  memset(into, 0, sizeof *into);
  char line[KX_PATH + 32];
  Flag ok = 0;
  Flag first = 1;
  while (fgets(line, sizeof line, f)) {
    line[strcspn(line, "\n")] = 0;
    if (first) {
      ok = strcmp(line, MAGIC) == 0;
      first = 0;
      if (!ok) break;
      continue;
    }
    if (strncmp(line, "target=", 7) == 0) {
      st_put(into->target, KX_PATH, line + 7);
      into->have_target = 1;
    } else if (strncmp(line, "description=", 12) == 0) {
      st_put(into->description, KX_PATH, line + 12);
      into->have_description = 1;
    } else if (strncmp(line, "directory=", 10) == 0) {
      st_put(into->directory, KX_PATH, line + 10);
      into->have_directory = 1;
    }
  }
  fclose(f);
  return ok;
}

}  // namespace

Flag shl_read_link(const char *link_file, char *target, char *description,
                   char *working_directory) {
  if (target) target[0] = 0;
  if (description) description[0] = 0;
  if (working_directory) working_directory[0] = 0;
  if (!link_file) return 0;
  FakeLink read;
  if (!read_fake(link_file, &read)) return 0;
  if (target) st_put(target, KX_PATH, read.target);
  if (description) st_put(description, KX_PATH, read.description);
  if (working_directory) st_put(working_directory, KX_PATH, read.directory);
  return 1;
}

int16_t shl_windows_system(void) { return system_kind; }

void shl_notify_associations(void) { notify_count++; }

void shl_begin(void) { trace_word("begin"); }

Flag shl_link_create(void) {
  trace_word("create");
  if (fail_steps & SHL_FAIL_CREATE) return 0;
  memset(&link, 0, sizeof link);
  link_held = 1;
  return 1;
}

Flag shl_link_persist(void) {
  trace_word("persist");
  if (fail_steps & SHL_FAIL_PERSIST) {
    link_held = 0;
    return 0;
  }
  persist_held = link_held;
  return persist_held;
}

Flag shl_link_load(const char *link_file) {
  Flag loaded = persist_held && link_file && read_fake(link_file, &link);
  if (persist_held && !loaded) memset(&link, 0, sizeof link);
  trace_word(loaded ? "load*" : "load");
  return loaded;
}

Flag shl_link_set_path(const char *target) {
  trace_word("path");
  if ((fail_steps & SHL_FAIL_PATH) || !link_held || !target) return 0;
  st_put(link.target, KX_PATH, target);
  link.have_target = 1;
  return 1;
}

Flag shl_link_set_description(const char *description) {
  trace_word("description");
  if ((fail_steps & SHL_FAIL_DESCRIPTION) || !link_held || !description) return 0;
  st_put(link.description, KX_PATH, description);
  link.have_description = 1;
  return 1;
}

Flag shl_link_set_working_directory(const char *directory) {
  trace_word("directory");
  if ((fail_steps & SHL_FAIL_WORKING_DIRECTORY) || !link_held || !directory) return 0;
  st_put(link.directory, KX_PATH, directory);
  link.have_directory = 1;
  return 1;
}

Flag shl_link_save(const char *link_file) {
  trace_word("save");
  if ((fail_steps & SHL_FAIL_SAVE) || !persist_held || !link_file) return 0;
  FILE *f = fopen(link_file, "wb");
  if (!f) return 0;
  fprintf(f, "%s\n", MAGIC);
  if (link.have_target) fprintf(f, "target=%s\n", link.target);
  if (link.have_description) fprintf(f, "description=%s\n", link.description);
  if (link.have_directory) fprintf(f, "directory=%s\n", link.directory);
  return fclose(f) == 0;
}

void shl_link_release(void) {
  trace_word("release");
  persist_held = 0;
  link_held = 0;
}

void shl_end(void) { trace_word("end"); }

void shl_test_reset(void) {
  fail_steps = 0;
  system_kind = SHL_SYSTEM_NT;
  trace[0] = 0;
  notify_count = 0;
  link_held = persist_held = 0;
}

void shl_test_fail(int16_t steps) { fail_steps = steps; }
void shl_test_set_system(int16_t system) { system_kind = system; }
const char *shl_test_trace(void) { return trace; }
int32_t shl_test_notify_count(void) { return notify_count; }

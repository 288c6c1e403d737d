// check_main.cpp - the checks' entry. Besides the GoogleTest options it answers one question
// of the driver before a run:
//   kx_e2e_check --space DRIVE   prints "CLUSTER FREE_CLUSTERS" of the drive ("D:"), as the
//                                installer's disk-space check will see them
#include <windows.h>

#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

int main(int argc, char **argv) {
  if (argc == 3 && strcmp(argv[1], "--space") == 0) {
    char root[8];
    snprintf(root, sizeof root, "%.2s\\", argv[2]);
    DWORD sectors = 0, bytes = 0, free_clusters = 0, total = 0;
    if (!GetDiskFreeSpaceA(root, &sectors, &bytes, &free_clusters, &total)) {
      fprintf(stderr, "kx_e2e_check: no free space of %s (error %lu)\n", root, GetLastError());
      return 1;
    }
    printf("%lu %lu\n", (unsigned long)(sectors * bytes), (unsigned long)free_clusters);
    return 0;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

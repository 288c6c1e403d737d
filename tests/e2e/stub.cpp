// stub.cpp - a stand-in program for the end-to-end scenarios: the help package installer
// (hhlppack\hhupd.exe), a failing uninstaller or a failing main program. It appends its
// arguments, joined by "|", to a file named like itself plus ".RAN" beside itself, and ends
// with the exit code it was built with (KX_STUB_EXIT). "--hold FILE": FILE is opened without
// sharing before that line is written and held until a file named like it plus ".END" appears.
#include <windows.h>

#include <stdio.h>
#include <string.h>

int main(int argc, char **argv) {
  char self[MAX_PATH], end[MAX_PATH];
  DWORD n = GetModuleFileNameA(nullptr, self, MAX_PATH - 5);
  if (n == 0 || n >= MAX_PATH - 5) return 3;
  HANDLE held = INVALID_HANDLE_VALUE;
  if (argc == 3 && strcmp(argv[1], "--hold") == 0 &&
      (held = CreateFileA(argv[2], GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) ==
          INVALID_HANDLE_VALUE)
    return 4;
  strcpy(end, self);
  strcat(end, ".END");
  strcat(self, ".RAN");
  FILE *f = fopen(self, "ab");
  if (f) {
    for (int i = 0; i < argc; i++) fprintf(f, "%s%s", i ? "|" : "", argv[i]);
    fputs("\r\n", f);
    fclose(f);
  }
  if (held != INVALID_HANDLE_VALUE) {
    while (GetFileAttributesA(end) == INVALID_FILE_ATTRIBUTES) Sleep(20);
    CloseHandle(held);
  }
  return KX_STUB_EXIT;
}

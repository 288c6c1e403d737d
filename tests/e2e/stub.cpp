// stub.cpp - a stand-in program for the end-to-end scenarios: the help package installer
// (hhlppack\hhupd.exe), a failing uninstaller or a failing main program. It appends its
// arguments, joined by "|", to a file named like itself plus ".RAN" beside itself, and ends
// with the exit code it was built with (KX_STUB_EXIT).
#include <windows.h>

#include <stdio.h>
#include <string.h>

int main(int argc, char **argv) {
  char self[MAX_PATH];
  DWORD n = GetModuleFileNameA(nullptr, self, MAX_PATH - 5);
  if (n == 0 || n >= MAX_PATH - 5) return 3;
  strcat(self, ".RAN");
  FILE *f = fopen(self, "ab");
  if (f) {
    for (int i = 0; i < argc; i++) fprintf(f, "%s%s", i ? "|" : "", argv[i]);
    fputs("\r\n", f);
    fclose(f);
  }
  return KX_STUB_EXIT;
}

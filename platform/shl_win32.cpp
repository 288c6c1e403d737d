// shl_win32.cpp - the shell seam over ole32 / shell32: the shell's link object through
// IShellLinkA and IPersistFile, the version of the system, and the association notification.
#include "platform/shl.h"

#include <string.h>
#include <windows.h>
#include <objbase.h>
#include <shlobj.h>
#include <shobjidl.h>

namespace {

IShellLinkA *link_object;
IPersistFile *persist_file;

// The shortcut name as the persist-file interface wants it: wide, from the ANSI code page.
void wide_name(const char *name, WCHAR *wide, int size) {
  wide[0] = 0;
  if (MultiByteToWideChar(CP_ACP, 0, name, -1, wide, size) == 0) wide[size - 1] = 0;
}

}  // namespace

int16_t shl_windows_system(void) {
  OSVERSIONINFOA version;
  memset(&version, 0, sizeof version);
  version.dwOSVersionInfoSize = sizeof version;
  if (!GetVersionExA(&version)) return SHL_SYSTEM_OTHER;
  if (version.dwPlatformId == VER_PLATFORM_WIN32_NT) return SHL_SYSTEM_NT;
  if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS && version.dwMajorVersion == 4)
    return version.dwMinorVersion >= 10 ? SHL_SYSTEM_98 : SHL_SYSTEM_95;
  return SHL_SYSTEM_OTHER;
}

void shl_notify_associations(void) {
  SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_FLUSH, nullptr, nullptr);
}

void shl_begin(void) { CoInitialize(nullptr); }

Flag shl_link_create(void) {
  link_object = nullptr;
  persist_file = nullptr;
  HRESULT result = CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_IShellLinkA, (void **)&link_object);
  if (FAILED(result)) link_object = nullptr;
  return link_object != nullptr;
}

Flag shl_link_persist(void) {
  if (!link_object) return 0;
  HRESULT result = link_object->QueryInterface(IID_IPersistFile, (void **)&persist_file);
  if (FAILED(result) || !persist_file) {
    persist_file = nullptr;
    link_object->Release();
    link_object = nullptr;
    return 0;
  }
  return 1;
}

Flag shl_link_load(const char *link_file) {
  if (!persist_file || !link_file) return 0;
  WCHAR wide[KX_PATH];
  wide_name(link_file, wide, KX_PATH);
  return SUCCEEDED(persist_file->Load(wide, 0));
}

Flag shl_link_set_path(const char *target) {
  return link_object && target && SUCCEEDED(link_object->SetPath(target));
}

Flag shl_link_set_description(const char *description) {
  return link_object && description && SUCCEEDED(link_object->SetDescription(description));
}

Flag shl_link_set_working_directory(const char *directory) {
  return link_object && directory && SUCCEEDED(link_object->SetWorkingDirectory(directory));
}

Flag shl_link_save(const char *link_file) {
  if (!persist_file || !link_file) return 0;
  WCHAR wide[KX_PATH];
  wide_name(link_file, wide, KX_PATH);
  return SUCCEEDED(persist_file->Save(wide, TRUE));
}

void shl_link_release(void) {
  if (persist_file) persist_file->Release();
  persist_file = nullptr;
  if (link_object) link_object->Release();
  link_object = nullptr;
}

void shl_end(void) { CoUninitialize(); }

Flag shl_read_link(const char *link_file, char *target, char *description,
                   char *working_directory) {
  if (target) target[0] = 0;
  if (description) description[0] = 0;
  if (working_directory) working_directory[0] = 0;
  if (!link_file) return 0;
  Flag ok = 0;
  shl_begin();
  if (shl_link_create() && shl_link_persist()) {
    if (shl_link_load(link_file)) {
      ok = 1;
      if (target && FAILED(link_object->GetPath(target, KX_PATH, nullptr, SLGP_RAWPATH)))
        target[0] = 0;
      if (description && FAILED(link_object->GetDescription(description, KX_PATH)))
        description[0] = 0;
      if (working_directory &&
          FAILED(link_object->GetWorkingDirectory(working_directory, KX_PATH)))
        working_directory[0] = 0;
    }
    shl_link_release();
  }
  shl_end();
  return ok;
}

void shl_test_reset(void) {}
void shl_test_fail(int16_t) {}
void shl_test_set_system(int16_t) {}
const char *shl_test_trace(void) { return ""; }
int32_t shl_test_notify_count(void) { return 0; }

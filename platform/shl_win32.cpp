// shl_win32.cpp - the shell seam over ole32 / shell32: the shell's link object through
// IShellLinkW and IPersistFile, the version of the system, and the association notification.
// Every text goes in and comes back through wtext (1250).
#include "platform/shl.h"

#include "platform/wtext.h"

#include <windows.h>
#include <objbase.h>
#include <shlobj.h>
#include <shobjidl.h>
#include <string.h>

namespace {

IShellLinkW *link_object;
IPersistFile *persist_file;

// A text of ours as the link object takes it.
struct Wide {
  wchar_t text[WTEXT_PATH];
  Flag ok;
  explicit Wide(const char *text_1250) : ok(wtext_in(text_1250, text, WTEXT_PATH)) {}
};

// A text the link object gave back, into buffer (KX_PATH bytes): "" when it holds a character
// that 1250 lacks.
void back(const wchar_t *wide, char *buffer) {
  if (!wtext_out(wide, buffer, KX_PATH)) buffer[0] = 0;
}

}  // namespace

int16_t shl_windows_system(void) {
  OSVERSIONINFOW version;
  memset(&version, 0, sizeof version);
  version.dwOSVersionInfoSize = sizeof version;
  if (!GetVersionExW(&version)) return SHL_SYSTEM_OTHER;
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
  HRESULT result = CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                    (void **)&link_object);
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
  Wide wide(link_file);
  return wide.ok && SUCCEEDED(persist_file->Load(wide.text, 0));
}

Flag shl_link_set_path(const char *target) {
  if (!link_object || !target) return 0;
  Wide wide(target);
  return wide.ok && SUCCEEDED(link_object->SetPath(wide.text));
}

Flag shl_link_set_description(const char *description) {
  if (!link_object || !description) return 0;
  Wide wide(description);
  return wide.ok && SUCCEEDED(link_object->SetDescription(wide.text));
}

Flag shl_link_set_working_directory(const char *directory) {
  if (!link_object || !directory) return 0;
  Wide wide(directory);
  return wide.ok && SUCCEEDED(link_object->SetWorkingDirectory(wide.text));
}

Flag shl_link_save(const char *link_file) {
  if (!persist_file || !link_file) return 0;
  Wide wide(link_file);
  return wide.ok && SUCCEEDED(persist_file->Save(wide.text, TRUE));
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
      wchar_t wide[WTEXT_PATH];
      if (target && SUCCEEDED(link_object->GetPath(wide, WTEXT_PATH, nullptr, SLGP_RAWPATH)))
        back(wide, target);
      if (description && SUCCEEDED(link_object->GetDescription(wide, WTEXT_PATH)))
        back(wide, description);
      if (working_directory && SUCCEEDED(link_object->GetWorkingDirectory(wide, WTEXT_PATH)))
        back(wide, working_directory);
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

// shl.h - shortcut files (shell links) and shell notifications.
//
// CreateShellLink is the one call the installer uses to write a shortcut; it reports its own
// faults. Below it lies the platform seam, one call per component-object step: the Windows
// build (shl_win32.cpp) goes to ole32 / shell32 (CoInitialize, CoCreateInstance of CLSID_ShellLink
// with IShellLinkW, IPersistFile, SHChangeNotify); the native build (shl_host.cpp) keeps one
// link object in memory and saves it as a small text file, so that the installer's steps can be
// tested without Windows. The seam holds at most one link object at a time (one thread).
// All texts are Windows-1250 (converted explicitly for the wide calls on Windows).
#ifndef KX_SHL_H
#define KX_SHL_H

#include "common/co.h"

// ---- Shortcuts ---------------------------------------------------------------------------------

Flag CreateShellLink(const char *link_file, const char *target, const char *description,
                     const char *working_directory);
// Writes the shortcut file link_file (a name relative to the current directory, or a full
// path) pointing at target, with the description and working directory; no arguments, icon,
// hot key or show command are set. An existing shortcut of that name is loaded first and
// changed in place. Steps and their messages (error boxes, module we):
//   create the link object fails: "Nelze vytvořit zástupce", nothing more is tried;
//   no persist-file interface: nothing more is tried, no message;
//   setting the path / description / working directory fails: "Chyba při nastavování cesty
//     zástupce %s", "Chyba při nastavování popisu zástupce %s", "Chyba při nastavování
//     pracovního adresáře %s", and the next step is tried all the same;
//   saving fails: "Chyba při ukládání zástupce %s".
// Each %s is the description, not the file name. The component library is initialised and
// uninitialised around every call. Returns 1 always (also after a message); a null argument
// is InternalError("shl") and 0.

Flag shl_read_link(const char *link_file, char *target, char *description, char *working_directory);
// Loads a shortcut file and copies its target, description and working directory into the
// three buffers of KX_PATH characters each (cut to fit). 0 when the file can't be loaded (the
// buffers are then ""). For tests and tools; the installer itself only writes shortcuts.

// ---- The operating system, as the shortcut steps need to tell them apart --------------------

enum { SHL_SYSTEM_OTHER = 0, SHL_SYSTEM_NT = 1, SHL_SYSTEM_98 = 2, SHL_SYSTEM_95 = 3 };
int16_t shl_windows_system(void);
// From GetVersionExW: SHL_SYSTEM_NT on the NT platform (NT 4, 2000 and later); on the Windows
// platform SHL_SYSTEM_98 for version 4.10 and later (98, Millennium), SHL_SYSTEM_95 for 4.0 up
// to 4.09; SHL_SYSTEM_OTHER for anything else (Win32s). Native build: SHL_SYSTEM_NT unless a
// test chose another with shl_test_set_system.

// ---- Shell notification ----------------------------------------------------------------------

void shl_notify_associations(void);
// SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_FLUSH, null, null): file associations changed.

// ---- Platform seam of CreateShellLink (one step each, in this order) ------------------------

void shl_begin(void);
// CoInitialize(null); its result is not looked at.
Flag shl_link_create(void);
// CoCreateInstance(CLSID_ShellLink, null, CLSCTX_INPROC_SERVER, IID_IShellLinkA). 1 on success.
Flag shl_link_persist(void);
// QueryInterface(IID_IPersistFile) on the link object. 0 on failure, and the link object has
// then been released.
Flag shl_link_load(const char *link_file);
// The name to wide characters (MultiByteToWideChar, ANSI code page, up to 1024), then
// IPersistFile::Load with mode 0. 1 when an existing shortcut was loaded.
Flag shl_link_set_path(const char *target);
Flag shl_link_set_description(const char *description);
Flag shl_link_set_working_directory(const char *directory);
// IShellLinkA::SetPath / SetDescription / SetWorkingDirectory. 1 on success.
Flag shl_link_save(const char *link_file);
// IPersistFile::Save under the wide name with remember = true. 1 on success.
void shl_link_release(void);
// Releases the persist-file interface (when held), then the link object (when held).
void shl_end(void);
// CoUninitialize.

// ---- Test controls of the native build (the Windows build ignores them) ---------------------

enum {
  SHL_FAIL_CREATE = 1,
  SHL_FAIL_PERSIST = 2,
  SHL_FAIL_PATH = 4,
  SHL_FAIL_DESCRIPTION = 8,
  SHL_FAIL_WORKING_DIRECTORY = 16,
  SHL_FAIL_SAVE = 32
};
void shl_test_reset(void);
// Native build: no failures, system NT, empty trace, notification count 0.
void shl_test_fail(int16_t steps);
// Native build: the steps named by the SHL_FAIL_* bits fail from now on.
void shl_test_set_system(int16_t system);
// Native build: the answer of shl_windows_system from now on.
const char *shl_test_trace(void);
// Native build: the seam calls since the reset, each as a word followed by one blank:
// "begin create persist load path description directory save release end " for one shortcut
// ("load" is "load*" when an existing shortcut was loaded). Cut at 4095 characters.
// Windows build: "".
int32_t shl_test_notify_count(void);
// Native build: shl_notify_associations calls since the reset. Windows build: 0.

#endif

// shl.cpp - CreateShellLink: the component-object steps of one shortcut in their order, with
// the messages of each failure. The steps themselves are the platform's (shl_win32.cpp,
// shl_host.cpp).
#include "platform/shl.h"

#include "common/we.h"

Flag CreateShellLink(const char *link_file, const char *target, const char *description,
                     const char *working_directory) {
  if (!link_file || !target || !description || !working_directory) {
    InternalError("shl", __LINE__);
    return 0;
  }
  shl_begin();
  if (!shl_link_create()) {
    ErrorBox("Nelze vytvořit zástupce");
  } else if (shl_link_persist()) {
    // An existing shortcut of the same name is the starting point; a missing one is no fault.
    shl_link_load(link_file);
    if (!shl_link_set_path(target))
      ErrorBoxF("Chyba při nastavování cesty zástupce %s", description);
    if (!shl_link_set_description(description))
      ErrorBoxF("Chyba při nastavování popisu zástupce %s", description);
    if (!shl_link_set_working_directory(working_directory))
      ErrorBoxF("Chyba při nastavování pracovního adresáře %s", description);
    if (!shl_link_save(link_file)) ErrorBoxF("Chyba při ukládání zástupce %s", description);
    shl_link_release();
  }
  shl_end();
  return 1;
}

// we_plat.h - what the reporting module needs of the platform (we_win32.cpp on Windows,
// we_host.cpp elsewhere). Internal to the module.
#ifndef KX_WE_PLAT_H
#define KX_WE_PLAT_H

// Shows the message box and waits for it. Texts are Windows-1250.
void we_plat_message_box(void *owner, const char *text, const char *title, unsigned flags);

// Enables (1) or disables (0) every top-level window of the calling thread.
void we_plat_enable_thread_windows(int enable);

#endif

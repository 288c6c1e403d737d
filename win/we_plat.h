// we_plat.h - what the reporting module needs of the platform (we_win32.cpp on Windows,
// we_host.cpp elsewhere). Internal to the module.
#ifndef KX_WE_PLAT_H
#define KX_WE_PLAT_H

// Shows the message box and waits for it. Texts are Windows-1250.
void we_plat_message_box(void *owner, const char *text, const char *title, unsigned flags);

// Enables (1) or disables (0) every top-level window of the calling thread.
void we_plat_enable_thread_windows(int enable);

// Shows the question, notice or message dialog of kind (WE_DIALOG_*) modally with the title,
// the text and the kind's buttons, owned by owner (null: none), and returns the code it ended
// with (1, 7, 6, 2; 0 when the toolkit could not run it); -1 when the dialog could not be built.
// Windows: the toolkit's dialog. Native build: questions answer 2, notices and messages go to
// standard error and answer 1.
int we_plat_dialog(int kind, void *owner, const char *title, const char *text);

#endif

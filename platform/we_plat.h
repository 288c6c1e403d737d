// we_plat.h - what the reporting module needs of the platform (we_win32.cpp on Windows,
// we_host.cpp elsewhere). Internal to the module.
#ifndef KX_WE_PLAT_H
#define KX_WE_PLAT_H

// Shows the message box and waits for it. Texts are Windows-1250.
void we_plat_message_box(void *owner, const char *text, const char *title, unsigned flags);

// Enables (1) or disables (0) every top-level window of the calling thread.
void we_plat_enable_thread_windows(int enable);

// The dialogs when no program has given the reporting module its own (we_set_dialog_ui): shows
// the question, notice or message of kind (0..2 questions, 3 notice, 4 message: WE_DIALOG_*)
// with the title and the text, owned by owner (null: none), and returns the code it ended with
// (1 yes / OK, 7 no, 2 cancel or closed; 0 when it could not be shown). Windows: the system's
// plain message box. Native build: questions answer 2, notices and messages go to standard error
// and answer 1.
int we_plat_dialog(int kind, void *owner, const char *title, const char *text);

#endif

// questions.h - the reporting module's question, notice and message dialogs (common/we.h:
// QuestionBox, NoticeBox, ErrorDialog, ...) as dialogs of the toolkit. The reporting module does
// not know the toolkit: the toolkit hands it these dialogs when the application starts
// (app_current and app_run call questions_install), and a program that asks before it touches
// the toolkit calls questions_install itself first. Windows only.
#ifndef KX_QUESTIONS_H
#define KX_QUESTIONS_H

#include "common/co.h"

void questions_install(void);
// Makes questions_run the reporting module's dialogs (we_set_dialog_ui). May be called any
// number of times.

int16_t questions_run(int16_t kind, void *owner, const char *title, const char *text);
// Shows the dialog of kind (WE_DIALOG_*) modally: the text as body, sized to it, and the kind's
// buttons ("&Ano" 1, "&Ne" 7, "&Vše" 6, "&Storno" 2; notices and messages "&O.K." 1) in a row
// below, the first the default; owned by owner (null: none) and centred on it. Returns the code
// the dialog ended with (Esc and the close box: 2; 0 when the toolkit could not run it), -1 when
// the dialog could not be built.

#endif

#pragma once

class QDialog;
class QDialogButtonBox;
class QWidget;

// OK and Cancel as every dialog of the program shows them: a green tick and a red
// cross, named bbtOk and bbtCancel, wired to accept and reject.
QDialogButtonBox *OkCancelButtons(QDialog *dialog);
// Gives the OK and Cancel of a box made elsewhere (an input box) the same look.
void StyleOkCancel(QDialogButtonBox *buttons);

// The usual frame of the settings dialogs: `content` above, OK and Cancel at the
// bottom right.
void SetOkCancelLayout(QDialog *dialog, QWidget *content);

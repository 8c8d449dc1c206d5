#pragma once

class QDialog;
class QWidget;

// The usual frame of the settings dialogs: `content` above, OK and Cancel at the
// bottom right (named bbtOk and bbtCancel) wired to accept and reject.
void SetOkCancelLayout(QDialog *dialog, QWidget *content);

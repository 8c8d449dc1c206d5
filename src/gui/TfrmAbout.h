#pragma once

#include <QDialog>

// The about box: name, version, build date and where the documentation is.
class TfrmAbout : public QDialog
{
  Q_OBJECT

public:
  explicit TfrmAbout(QWidget *parent = nullptr);
};

// The libraries the program runs on, with their versions.
class TfrmLibraries : public QDialog
{
  Q_OBJECT

public:
  explicit TfrmLibraries(QWidget *parent = nullptr);
};

#pragma once

#include "core/FileLock.h"

#include <QObject>
#include <QString>
#include <memory>

class QLocalServer;

// One running instance per user and settings file. The first instance holds a
// lock on a file beside the settings (a lock of the system, which it releases
// when the process ends however it ends, so a crash never leaves it behind) and
// listens on a local socket; a later start learns that it is not alone and can
// ask the first one to come to the front.
class TSingleInstance : public QObject
{
  Q_OBJECT

public:
  // `key` is the path of the settings file the instance works on; its lock file
  // is made beside it.
  explicit TSingleInstance(const QString &key, QObject *parent = nullptr);
  ~TSingleInstance() override;

  // True when this process is the only instance (and now holds the guard).
  bool IsPrimary() const { return FPrimary; }

  // From a later start: asks the running instance to raise its window. Returns
  // whether it answered.
  bool AskPrimaryToRaise() const;

signals:
  // In the running instance, when a later start asked for the window.
  void RaiseRequested();

private:
  QString FServerName;
  std::unique_ptr<TFileLock> FLock;
  QLocalServer *FServer = nullptr;
  bool FPrimary = false;
};

#pragma once

#include <QString>

// An exclusive lock of the system on a file (flock), taken when the object is
// made (at once or not at all, or waiting for its holder to let go) and held for
// its life. The system releases it when the
// process ends however it ends, so a crash never leaves it behind. The file is
// made (0600, in a folder made 0700) when missing and stays afterwards:
// removing it could race with a start that has just opened it.
class TFileLock
{
public:
  enum class TWait { No, UntilFree };
  explicit TFileLock(const QString &path, TWait wait = TWait::No);
  ~TFileLock();
  TFileLock(const TFileLock &) = delete;
  TFileLock &operator=(const TFileLock &) = delete;

  // Held by this process. When no lock can be made there at all (a read-only
  // folder...), that says nothing of another process: the lock counts as held,
  // and the trace says why it is not.
  bool IsHeld() const { return FHeld; }
  const QString &Path() const { return FPath; }

private:
  QString FPath;
  int FDescriptor = -1;
  bool FHeld = false;
};

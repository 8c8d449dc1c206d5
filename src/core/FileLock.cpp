#include "FileLock.h"

#include "AtomicFile.h"
#include "Errors.h"
#include "Trace.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

TFileLock::TFileLock(const QString &path, TWait wait) : FPath(path)
{
  QString failure;
  try {
    MakePrivateFolder(QFileInfo(path).absolutePath());
    FDescriptor = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (FDescriptor < 0)
      failure = QString::fromLocal8Bit(std::strerror(errno));
  } catch (const EQuorvexError &error) {
    failure = error.Message();
  }
  if (FDescriptor >= 0) {
    int result = -1;
    do
      result = ::flock(FDescriptor, wait == TWait::No ? LOCK_EX | LOCK_NB : LOCK_EX);
    while (result != 0 && errno == EINTR);
    FHeld = result == 0;
    if (!FHeld && errno != EWOULDBLOCK) {
      failure = QString::fromLocal8Bit(std::strerror(errno));
      FHeld = true;
    }
  } else {
    FHeld = true;
  }
  if (!failure.isEmpty())
    TraceValue(lcApp(), "Lock cannot be taken, going on unguarded", path + QStringLiteral(": ") + failure);
}

TFileLock::~TFileLock()
{
  if (FDescriptor >= 0)
    ::close(FDescriptor);
}

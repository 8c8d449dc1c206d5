#include "FileLock.h"

#include "core/AtomicFile.h"
#include "core/Errors.h"
#include "core/Trace.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

TFileLock::TFileLock(const QString &path) : FPath(path)
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
    FHeld = ::flock(FDescriptor, LOCK_EX | LOCK_NB) == 0;
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

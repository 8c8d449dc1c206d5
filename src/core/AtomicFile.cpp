#include "AtomicFile.h"

#include "Errors.h"
#include "Trace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdio.h> // renameat2
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString SystemReason(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

[[noreturn]] void Refuse(const QString &path, int error)
{
  throw EWriteError(QStringLiteral("Unable to write to %1: %2").arg(path, SystemReason(error)));
}

// Closes the descriptor and removes the unfinished file, whatever happens.
class TPendingFile
{
public:
  TPendingFile(QByteArray name, int descriptor) : FName(std::move(name)), FDescriptor(descriptor) {}
  ~TPendingFile()
  {
    if (FDescriptor >= 0)
      ::close(FDescriptor);
    if (!FKept)
      ::unlink(FName.constData());
  }
  TPendingFile(const TPendingFile &) = delete;
  TPendingFile &operator=(const TPendingFile &) = delete;

  int Descriptor() const { return FDescriptor; }
  // Closes the file; false (errno set) when the system reports a late failure.
  bool Close()
  {
    const int descriptor = std::exchange(FDescriptor, -1);
    return ::close(descriptor) == 0;
  }
  void Keep() { FKept = true; }

private:
  QByteArray FName;
  int FDescriptor;
  bool FKept = false;
};

bool WriteAll(int descriptor, const QByteArray &bytes)
{
  const char *data = bytes.constData();
  qsizetype left = bytes.size();
  while (left > 0) {
    const ssize_t written = ::write(descriptor, data, static_cast<size_t>(left));
    if (written < 0 && errno == EINTR)
      continue;
    if (written <= 0) {
      if (written == 0)
        errno = ENOSPC;
      return false;
    }
    data += written;
    left -= written;
  }
  return true;
}

// The rename is on disk once the folder itself is synced; a folder that cannot
// be opened for that (some file systems) leaves it to the system.
void SyncFolder(const QByteArray &folder)
{
  const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0)
    return;
  if (::fsync(descriptor) != 0)
    TraceError(lcCore(), QStringLiteral("The folder %1 could not be synced: %2")
                             .arg(QFile::decodeName(folder), SystemReason(errno)));
  ::close(descriptor);
}

} // namespace

namespace {

// The file a path names: a symbolic link (dotfiles kept in a repository) is
// followed to its target, which is written, so that the link stays a link.
QString FinalTarget(const QString &path)
{
  QString target = path;
  for (int links = 0; links < 40 && QFileInfo(target).isSymLink(); ++links)
    target = QFileInfo(target).symLinkTarget();
  if (target != path)
    TraceValue(lcCore(), "Symbolic link, its target written", path + QStringLiteral(" -> ") + target);
  return target;
}

enum class TPlacing { Replace, NeverReplace };

// Writes `bytes` beside `path` and renames them over it; with NeverReplace
// the rename fails instead of replacing a file (false is returned).
bool WriteAndPlace(const QString &path, const QByteArray &bytes, bool ownerOnly, TPlacing placing)
{
  const QString file = FinalTarget(path);
  const QByteArray target = QFile::encodeName(file);
  const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());

  struct stat existing;
  const bool exists = ::stat(target.constData(), &existing) == 0;
  if (exists && placing == TPlacing::NeverReplace)
    return false;
  if (exists && S_ISDIR(existing.st_mode))
    Refuse(path, EISDIR);
  // The rename would replace a file that its mode protects from writing (its
  // owner's write bit is honoured even for the superuser).
  if (exists && !(existing.st_mode & S_IWUSR))
    Refuse(path, EACCES);
  if (exists && ::access(target.constData(), W_OK) != 0)
    Refuse(path, errno);

  const QByteArray pendingName =
      target + ".new-" + QByteArray::number(QRandomGenerator::global()->generate(), 16);
  const int descriptor = ::open(pendingName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor < 0)
    Refuse(path, errno);
  TPendingFile pending(pendingName, descriptor);

  mode_t mode = exists ? (existing.st_mode & 07777) : (S_IRUSR | S_IWUSR);
  if (ownerOnly && (mode & (S_IRWXG | S_IRWXO))) {
    TraceValue(lcCore(), "Readable by others, made 0600", path);
    mode &= ~mode_t(S_IRWXG | S_IRWXO);
  }
  if (!WriteAll(pending.Descriptor(), bytes) || ::fchmod(pending.Descriptor(), mode) != 0 ||
      ::fsync(pending.Descriptor()) != 0 || !pending.Close())
    Refuse(path, errno);
  const int renamed = placing == TPlacing::Replace
                          ? ::rename(pendingName.constData(), target.constData())
                          : ::renameat2(AT_FDCWD, pendingName.constData(), AT_FDCWD, target.constData(),
                                        RENAME_NOREPLACE);
  if (renamed != 0 && placing == TPlacing::NeverReplace && errno == EEXIST)
    return false; // another process took the name meanwhile
  if (renamed != 0)
    Refuse(path, errno);
  pending.Keep();
  SyncFolder(folder);
  return true;
}

} // namespace

void WriteFileAtomically(const QString &path, const QByteArray &bytes, bool ownerOnly)
{
  WriteAndPlace(path, bytes, ownerOnly, TPlacing::Replace);
}

bool WriteNewFileAtomically(const QString &path, const QByteArray &bytes)
{
  return WriteAndPlace(path, bytes, /*ownerOnly*/ false, TPlacing::NeverReplace);
}

void MakePrivateFolder(const QString &folder)
{
  const QString clean = QDir::cleanPath(QDir(folder).absolutePath());
  QString built;
  for (const QString &part : clean.split(u'/', Qt::SkipEmptyParts)) {
    built += u'/' + part;
    const QByteArray name = QFile::encodeName(built);
    if (::mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST)
      throw EWriteError(QStringLiteral("Unable to create the folder %1: %2").arg(built, SystemReason(errno)));
  }
  if (!QFileInfo(clean).isDir())
    throw EWriteError(QStringLiteral("Unable to create the folder %1: %2").arg(clean, SystemReason(ENOTDIR)));
}

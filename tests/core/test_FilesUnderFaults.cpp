// The program's files when the disk refuses them, and who may read them.

#include "core/AtomicFile.h"
#include "core/TextFiles.h"
#include "support/Raised.h"
#include "core/SecretCodec.h"
#include "core/Settings.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

// Makes every write of a regular file beyond `bytes` fail with EFBIG, as a full
// disk would, for the life of the object.
class TFileSizeLimit
{
public:
  explicit TFileSizeLimit(rlim_t bytes)
  {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &FPrevious);
    const rlimit limit{bytes, FPrevious.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~TFileSizeLimit() { setrlimit(RLIMIT_FSIZE, &FPrevious); }

private:
  rlimit FPrevious{};
};

struct stat StatOf(const QString &path)
{
  struct stat status{};
  ::stat(QFile::encodeName(path).constData(), &status);
  return status;
}

mode_t ModeOf(const QString &path) { return StatOf(path).st_mode & 0777; }
ino_t InodeOf(const QString &path) { return StatOf(path).st_ino; }

class FilesUnderFaults : public ::testing::Test
{
protected:
  void SetUp() override { FPreviousMask = ::umask(022); }
  void TearDown() override { ::umask(FPreviousMask); }

  TTempConfig FConfig;
  QString FIni = FConfig.File("quorvex-followup.ini");
  mode_t FPreviousMask = 0;
};

} // namespace

TEST_F(FilesUnderFaults, AWriteThatDoesNotReachTheDiskLeavesTheOldFileWhole)
{
  const QByteArray old = "[QuorvexITSM]\nInstance=kept\n";
  WriteTextFile(FIni, old);
  tyQuorvexITSM ici;
  ici.Instance = QString(4000, u'x');
  {
    const TFileSizeLimit full(1024);
    EXPECT_EQ(MessageRaised<EWriteError>([&] { SaveConfigITSM(FIni, ici); }),
              "Unable to write to " + FIni + ": File too large");
  }
  EXPECT_EQ(ReadTextFile(FIni).toUtf8(), old);
  // Nothing half-written is left beside it (the lock that keeps two saves apart stays).
  EXPECT_EQ(QDir(FConfig.Root()).entryList(QDir::Files),
            (QStringList{"quorvex-followup.ini", "quorvex-followup.ini.write-lock"}));
}

TEST_F(FilesUnderFaults, ASaveThatChangesNoValueWritesNothing)
{
  tyQuorvexITSM ici;
  ici.Instance = "itsm";
  ici.API.Password = "secret";
  SaveConfigITSM(FIni, ici);
  const QString first = ReadTextFile(FIni);
  const ino_t inode = InodeOf(FIni);
  tyQuorvexITSM read;
  TSettingsWarnings warnings;
  ReadConfigITSM(FIni, read, warnings);
  SaveConfigITSM(FIni, read); // a secret enciphered anew would differ: a new nonce
  EXPECT_EQ(InodeOf(FIni), inode);
  read.API.Token = "new-token";
  SaveConfigITSM(FIni, read);
  EXPECT_NE(ReadTextFile(FIni), first);

  // A ticket without a priority has no code: never a key without a name.
  TColourStore colours(FIni);
  colours.GetSavedColor(Setting::PriorityColours, "");
  colours.GetSavedColor(Setting::StatusColours, "New");
  const ino_t withColours = InodeOf(FIni);
  colours.GetSavedColor(Setting::PriorityColours, "");
  EXPECT_EQ(InodeOf(FIni), withColours);
  EXPECT_FALSE(ReadTextFile(FIni).contains("\n="));
}

TEST_F(FilesUnderFaults, ADamagedSecretIsWrittenBackAsFoundUntilANewOneIsEntered)
{
  WriteTextFile(FIni, "[QuorvexITSM]\nClientSecret=bm90IGEgc2VjcmV0\nPassword=%%%\n[SMTP]\nPassword=AAAA\n");
  tyQuorvexITSM ici;
  tySMTPserver smtp;
  TSettingsWarnings warnings;
  ReadConfigITSM(FIni, ici, warnings);
  ReadConfigSMTP(FIni, smtp, warnings);
  ASSERT_EQ(warnings.size(), 3);
  EXPECT_TRUE(ici.API.ClientSecret.isEmpty());

  ici.API.Token = "renewed"; // a token renewal saves the group
  SaveConfigITSM(FIni, ici);
  SaveConfigSMTP(FIni, smtp);
  for (const char *kept : {"ClientSecret=bm90IGEgc2VjcmV0\n", "Password=%%%\n", "[SMTP]\nPassword=AAAA\n"})
    EXPECT_TRUE(ReadTextFile(FIni).contains(kept)) << kept;

  ici.API.Password = "typed again";
  SaveConfigITSM(FIni, ici);
  tyQuorvexITSM again;
  ReadConfigITSM(FIni, again, warnings);
  EXPECT_EQ(again.API.Password, "typed again");
  EXPECT_TRUE(ReadTextFile(FIni).contains("ClientSecret=bm90IGEgc2VjcmV0\n"));
}

TEST_F(FilesUnderFaults, OnlyTheOwnerReadsWhatTheProgramCreates)
{
  const QString folder = FConfig.File("Vellmor/vlmQuorvexITSM");
  MakePrivateFolder(folder);
  WriteFileAtomically(folder + "/new.log", "x");
  EXPECT_EQ((QList<mode_t>{ModeOf(FConfig.File("Vellmor")), ModeOf(folder), ModeOf(folder + "/new.log")}),
            (QList<mode_t>{0700u, 0700u, 0600u}));
  // A file the user opened to others keeps its mode.
  ::chmod(QFile::encodeName(folder + "/new.log").constData(), 0644);
  WriteFileAtomically(folder + "/new.log", "y");
  EXPECT_EQ(ModeOf(folder + "/new.log"), 0644u);

  // But the settings, which hold the token and the secrets, are closed at their
  // next save. Kept with the dotfiles in a repository, they are saved through
  // their symbolic link: the target is written, atomically, and the link stays.
  const QString target = FConfig.File("dotfiles/quorvex-followup.ini");
  QDir().mkpath(FConfig.File("dotfiles"));
  WriteTextFile(target, "[QuorvexITSM]\nInstance=x\n");
  ::chmod(QFile::encodeName(target).constData(), 0644);
  ASSERT_TRUE(QFile::link("dotfiles/quorvex-followup.ini", FIni));
  tyQuorvexITSM ici;
  ici.Instance = "y";
  SaveConfigITSM(FIni, ici);
  EXPECT_TRUE(QFileInfo(FIni).isSymLink());
  EXPECT_TRUE(ReadTextFile(target).contains("Instance=y\n"));
  EXPECT_EQ(ModeOf(target), 0600u);
  EXPECT_EQ(QDir(FConfig.File("dotfiles")).entryList(QDir::Files), QStringList{"quorvex-followup.ini"})
      << "no pending file left";
}

// Two runs started in the same second keep a log each.
TEST_F(FilesUnderFaults, ARunLogNeverReplacesAnother)
{
  const QString log = FConfig.File("quorvex-followup_20261114_060001.log");
  for (const char *suffix : {"", "_2", "_3"})
    EXPECT_EQ(SaveLinesAsNewFile(log, {QString("line") + suffix}, "\n"),
              FConfig.File(QString("quorvex-followup_20261114_060001") + suffix + ".log"));
  EXPECT_EQ(ReadTextFile(log), "line\n");
}

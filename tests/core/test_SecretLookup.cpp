// Where the secrets come from (systemd credentials, the system keyring, the
// settings file) and where entered ones go, with a keyring fake that may refuse
// or never answer.

#include "core/IniFile.h"
#include "core/Keyring.h"
#include "core/SecretCodec.h"
#include "core/SecretLookup.h"
#include "core/Settings.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QHash>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

// Answers on a later turn of the event loop, as a keyring over the session bus.
class TFakeKeyring : public TKeyring
{
public:
  enum TMood { Answers, Refuses, NeverAnswers } Mood = Answers;
  QHash<QString, QString> Stored;
  int Asked = 0;

  void Read(const QString &key, TDone done) override
  {
    Later(std::move(done), Stored.contains(key) ? TAnswer{TAnswer::Done, Stored.value(key), {}}
                                                : TAnswer{TAnswer::NotFound, {}, QStringLiteral("no such entry")});
  }
  void Write(const QString &key, const QString &secret, TDone done) override
  {
    if (Mood == Answers)
      Stored.insert(key, secret);
    Later(std::move(done), TAnswer{TAnswer::Done, {}, {}});
  }

private:
  void Later(TDone done, TAnswer answer)
  {
    ++Asked;
    if (Mood == Refuses)
      answer = TAnswer{TAnswer::Failed, {}, QStringLiteral("the collection is locked")};
    if (Mood != NeverAnswers)
      QTimer::singleShot(0, [done = std::move(done), answer] { done(answer); });
  }
};

class SecretLookupTest : public ::testing::Test
{
protected:
  // Sources with the fake keyring (when `keyring`) and the credentials folder
  // (when `credentials`); a time-out short enough for a test.
  TSecretSources Sources(bool keyring, bool credentials, bool desktop = false)
  {
    return {credentials ? FCredentials : QString(), keyring ? &FKeyring : nullptr, desktop,
            std::chrono::milliseconds(50)};
  }
  QString KeyOf(const TSetting<QString> &setting) const { return KeyringKey(TIniFile(FIni), setting); }
  void WriteIni(const QString &clientSecret)
  {
    WriteTextFile(FIni, QStringLiteral("[QuorvexITSM]\nClientSecret=%1\nPassword=%2\n[SMTP]\nPassword=%3\n")
                            .arg(clientSecret, Encrypt("file-api"), Encrypt("file-smtp"))
                            .toUtf8());
  }

  TTempConfig FConfig;
  QString FIni = FConfig.File("quorvex-followup.ini");
  QString FCredentials = FConfig.File("credentials");
  TFakeKeyring FKeyring;
  TSettingsWarnings FWarnings;
};

} // namespace

// The first of the credentials folder, the keyring and the settings file that
// holds a secret gives it; a keyring that never answers is waited for once.
TEST_F(SecretLookupTest, EachSecretComesFromCredentialsThenKeyringThenSettingsFile)
{
  enum TFile { None, Missing, Empty, Holds };
  const struct
  {
    const char *Case;
    TFile Credential; // the folder's client-secret file
    bool Keyring;     // a keyring is there
    const char *InKeyring;
    const char *InFile; // the settings file's ClientSecret: enciphered, or the marker
    const char *Expected;
    const char *Warning; // part of the one warning, or none
    TFakeKeyring::TMood Mood = TFakeKeyring::Answers;
  } cases[] = {
      {"credentials first", Holds, true, "s3-ring", "s3-file", "s3-cred", nullptr},
      {"no credentials folder", None, true, "s3-ring", "s3-file", "s3-ring", nullptr},
      {"credential file missing", Missing, true, nullptr, "s3-file", "s3-file", nullptr},
      {"credential file empty", Empty, true, "s3-ring", "s3-file", "s3-ring", nullptr},
      {"keyring without the entry", None, true, nullptr, "s3-file", "s3-file", nullptr},
      {"marker, keyring gives it", None, true, "s3-ring", nullptr, "s3-ring", nullptr},
      {"marker, no keyring", None, false, nullptr, nullptr, "", "\"ClientSecret\" of section [QuorvexITSM]"},
      {"marker, keyring lost it", Missing, true, nullptr, nullptr, "", "is kept in the system keyring"},
      {"keyring silent", None, true, "s3-ring", "s3-file", "s3-file", "did not answer within 0.05 s",
       TFakeKeyring::NeverAnswers},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.Case);
    QDir(FCredentials).removeRecursively();
    if (c.Credential != None)
      QDir().mkpath(FCredentials);
    if (c.Credential == Empty || c.Credential == Holds)
      WriteTextFile(FCredentials + "/client-secret", c.Credential == Holds ? "s3-cred\n" : "\n");
    FKeyring.Stored.clear();
    if (c.InKeyring)
      FKeyring.Stored.insert(KeyOf(Setting::Itsm::ClientSecret), c.InKeyring);
    FKeyring.Mood = c.Mood;
    FKeyring.Asked = 0;
    WriteIni(c.InFile ? Encrypt(c.InFile) : CKeyringMarker);
    FWarnings.clear();

    TSecretLookup lookup(Sources(c.Keyring, c.Credential != None));
    tyQuorvexITSM ici;
    tySMTPserver smtp;
    ReadConfigITSM(FIni, ici, FWarnings, lookup);
    ReadConfigSMTP(FIni, smtp, FWarnings, lookup);
    // The other two secrets have no credential nor keyring entry of their own.
    EXPECT_EQ(QStringList({ici.API.ClientSecret, ici.API.Password, smtp.Password}),
              QStringList({c.Expected, "file-api", "file-smtp"}));
    EXPECT_TRUE(c.Mood != TFakeKeyring::NeverAnswers || FKeyring.Asked == 1) << "asked again after its silence";
    ASSERT_EQ(FWarnings.size(), c.Warning ? 1 : 0) << FWarnings.join('\n').toStdString();
    EXPECT_TRUE(!c.Warning || FWarnings.first().contains(c.Warning)) << FWarnings.join('\n').toStdString();
    EXPECT_FALSE(FWarnings.join('\n').contains("s3-") || FWarnings.join('\n').contains("file-")); // no secret told
  }
}

TEST_F(SecretLookupTest, EnteredSecretsGoToTheKeyringOfADesktopSessionAndTheFileKeepsAMarker)
{
  const struct
  {
    const char *Case;
    bool Desktop;
    TFakeKeyring::TMood Mood;
    bool InKeyring;
    const char *Warning;
  } cases[] = {
      {"desktop session", true, TFakeKeyring::Answers, true, nullptr},
      {"keyring refuses", true, TFakeKeyring::Refuses, false, "the collection is locked"},
      {"keyring silent", true, TFakeKeyring::NeverAnswers, false, "no answer within 0.05 s"},
      {"unattended run", false, TFakeKeyring::Answers, false, nullptr},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.Case);
    QFile::remove(FIni);
    FKeyring.Stored.clear();
    FKeyring.Mood = c.Mood;
    FWarnings.clear();
    TSecretLookup lookup(Sources(true, false, c.Desktop));
    tyQuorvexITSM ici;
    ici.API.ClientSecret = "typed secret";
    SaveConfigITSM(FIni, ici, lookup, FWarnings);

    const QString stored = TIniFile(FIni).ReadString("QuorvexITSM", "ClientSecret", "");
    EXPECT_EQ(c.InKeyring ? FKeyring.Stored.value(KeyOf(Setting::Itsm::ClientSecret)) : Decrypt(stored), "typed secret");
    EXPECT_EQ(stored == CKeyringMarker, c.InKeyring);
    ASSERT_EQ(FWarnings.size(), c.Warning ? 1 : 0) << FWarnings.join('\n').toStdString();
    EXPECT_TRUE(!c.Warning || FWarnings.first().contains(c.Warning)) << FWarnings.join('\n').toStdString();
  }
}

TEST_F(SecretLookupTest, ASecretFromCredentialsOrTheKeyringIsNeverWrittenToTheSettingsFile)
{
  WriteIni(CKeyringMarker);
  QDir().mkpath(FCredentials);
  WriteTextFile(FCredentials + "/api-password", "s3-cred-api");
  FKeyring.Stored.insert(KeyOf(Setting::Itsm::ClientSecret), "s3-ring");
  const QString storedPassword = TIniFile(FIni).ReadString("QuorvexITSM", "Password", "");
  TSecretLookup lookup(Sources(true, true, true));
  tyQuorvexITSM ici;
  ReadConfigITSM(FIni, ici, FWarnings, lookup);
  ASSERT_EQ(QStringList({ici.API.ClientSecret, ici.API.Password}), QStringList({"s3-ring", "s3-cred-api"}));
  const int asked = FKeyring.Asked;
  ici.API.Token = "renewed"; // a run that saves its new token
  SaveConfigITSM(FIni, ici, lookup, FWarnings);
  EXPECT_EQ(FKeyring.Asked, asked);
  const TIniFile saved(FIni);
  EXPECT_EQ((QStringList{saved.ReadString("QuorvexITSM", "Token", ""), saved.ReadString("QuorvexITSM", "ClientSecret", ""),
                         saved.ReadString("QuorvexITSM", "Password", "")}),
            (QStringList{"renewed", CKeyringMarker, storedPassword}));
  EXPECT_TRUE(FWarnings.isEmpty()) << FWarnings.join('\n').toStdString();
}

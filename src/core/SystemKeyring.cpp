#include "SystemKeyring.h"

#include <QFileInfo>
#include <qt6keychain/keychain.h>

namespace {

const QString CService = QStringLiteral("quorvex-followup");

// Starts `job`, which deletes itself once finished, and hands its outcome to `done`.
void Start(QKeychain::Job *job, const QString &key, TKeyring::TDone done)
{
  job->setAutoDelete(true);
  job->setInsecureFallback(false); // a secret never lands in a plain file
  job->setKey(key);
  QObject::connect(job, &QKeychain::Job::finished, job, [done = std::move(done)](QKeychain::Job *finished) {
    TKeyring::TAnswer answer;
    if (finished->error() == QKeychain::NoError) {
      answer.Status = TKeyring::TAnswer::Done;
      if (const auto *read = qobject_cast<QKeychain::ReadPasswordJob *>(finished))
        answer.Secret = read->textData();
    } else {
      answer.Status = finished->error() == QKeychain::EntryNotFound ? TKeyring::TAnswer::NotFound
                                                                     : TKeyring::TAnswer::Failed;
      answer.Error = finished->errorString();
    }
    done(answer);
  });
  job->start();
}

} // namespace

void TSystemKeyring::Read(const QString &key, TDone done)
{
  Start(new QKeychain::ReadPasswordJob(CService), key, std::move(done));
}

void TSystemKeyring::Write(const QString &key, const QString &secret, TDone done)
{
  auto *job = new QKeychain::WritePasswordJob(CService);
  job->setTextData(secret);
  Start(job, key, std::move(done));
}

bool SessionBusAvailable()
{
  if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
    return true;
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  return !runtime.isEmpty() && QFileInfo::exists(runtime + QStringLiteral("/bus"));
}

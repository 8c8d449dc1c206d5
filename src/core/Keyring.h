#pragma once

#include <QString>
#include <functional>

// The system's keyring (a secret service of the desktop session), seen as a
// store of texts by key. Asynchronous: the keyring may be locked and ask the
// person to unlock it, or not answer at all; TSecretLookup bounds the wait.
class TKeyring
{
public:
  struct TAnswer
  {
    enum TStatus { Done, NotFound, Failed } Status = Failed;
    QString Secret; // read: the stored text
    QString Error;  // Failed: the keyring's reason, in its own words
  };
  // Called once with the answer, on the calling thread, or never.
  using TDone = std::function<void(const TAnswer &answer)>;

  virtual ~TKeyring() = default;
  virtual void Read(const QString &key, TDone done) = 0;
  virtual void Write(const QString &key, const QString &secret, TDone done) = 0;
};

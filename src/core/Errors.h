#pragma once

#include <QString>
#include <stdexcept>

// Errors raised by the program's own code. Each carries a message meant for the
// user, naming the file, key, URL or server concerned, and may carry technical
// details (address, status, the library's own words) shown on demand.
class EQuorvexError : public std::runtime_error
{
public:
  explicit EQuorvexError(const QString &message, QString details = {})
      : std::runtime_error(message.toStdString()), FMessage(message), FDetails(std::move(details)) {}
  const QString &Message() const { return FMessage; }
  const QString &Details() const { return FDetails; }

private:
  QString FMessage;
  QString FDetails;
};

// A number outside the range its destination can hold.
class ERangeError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

// A text that does not convert to the value it should hold.
class EConvertError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

// A file that exists but cannot be read.
class EReadError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

// A file that the operating system refused to write.
class EWriteError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

// Something a person must set before a step can run; `Dialog` names the button
// whose dialog sets it ("Quorvex ITSM API"), which the window offers to open.
class EGuidance : public EQuorvexError
{
public:
  EGuidance(const QString &message, QString dialog) : EQuorvexError(message), FDialog(std::move(dialog)) {}
  const QString &Dialog() const { return FDialog; }

private:
  QString FDialog;
};

// A stored secret that is not in the stored form or fails authentication.
class ESecretError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

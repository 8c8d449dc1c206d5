#pragma once

#include <QString>
#include <stdexcept>

// Errors raised by the program's own code. Each carries a message meant for the
// user, naming the file, key, URL or server concerned.
class EQuorvexError : public std::runtime_error
{
public:
  explicit EQuorvexError(const QString &message)
      : std::runtime_error(message.toStdString()), FMessage(message) {}
  const QString &Message() const { return FMessage; }

private:
  QString FMessage;
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

// A stored secret that is not in the stored form or fails authentication.
class ESecretError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

#include "core/Errors.h"
#include "core/SecretCodec.h"

#include <QByteArray>
#include <gtest/gtest.h>

TEST(Secrets, RoundTripKeepsTheExactTextAndBlanksAreStoredEmpty)
{
  for (const QString &secret : {QString("p@ssw0rd"), QString("  spaced  "), QString::fromUtf8("été ÿ€ 日本"),
                                QString("a=b;c\"d'e")}) {
    const QString stored = Encrypt(secret);
    EXPECT_NE(stored, Encrypt(secret)); // a new nonce each time
    EXPECT_EQ(Decrypt(stored), secret) << secret.toStdString();
  }
  for (const QString &blank : {QString(), QString("   "), QString("\t\r\n ")})
    EXPECT_EQ(Encrypt(blank), QString());
  EXPECT_EQ(Decrypt(QString()), QString());
}

TEST(Secrets, StoredFormIsBase64OfBase64OnOneLineAndLineBreaksAreIgnored)
{
  const QString stored = Encrypt(QString(300, u'k'));
  EXPECT_FALSE(stored.contains(u'\n') || stored.contains(u'\r'));
  const auto outer = QByteArray::fromBase64Encoding(stored.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
  ASSERT_TRUE(outer);
  const auto inner = QByteArray::fromBase64Encoding(outer.decoded, QByteArray::AbortOnBase64DecodingErrors);
  ASSERT_TRUE(inner);
  // Nonce, ciphertext of the 300 bytes and tag: no clear text inside.
  EXPECT_EQ(inner.decoded.size(), 12 + 300 + 16);
  EXPECT_FALSE(inner.decoded.contains("kkkk"));
  QString folded;
  for (qsizetype i = 0; i < stored.size(); i += 76)
    folded += stored.mid(i, 76) + QStringLiteral("\r\n");
  EXPECT_EQ(Decrypt(folded), QString(300, u'k'));
}

TEST(Secrets, DamagedValuesAreRejected)
{
  const QString stored = Encrypt("secret");
  EXPECT_THROW(Decrypt("not base64 at all!"), ESecretError);
  EXPECT_THROW(Decrypt(stored.left(stored.size() / 2)), ESecretError); // truncated
  EXPECT_THROW(Decrypt(QString::fromLatin1(QByteArray("hello").toBase64())), ESecretError);

  // One changed byte of the ciphertext fails authentication.
  QByteArray inner = QByteArray::fromBase64(QByteArray::fromBase64(stored.toLatin1()));
  inner[14] = static_cast<char>(inner[14] ^ 0x01);
  EXPECT_THROW(Decrypt(QString::fromLatin1(inner.toBase64().toBase64())), ESecretError);
}

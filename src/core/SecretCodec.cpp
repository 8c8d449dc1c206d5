#include "SecretCodec.h"

#include "Errors.h"
#include "SecretPassword.h"
#include "uTools.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <QByteArray>
#include <array>
#include <cstring>
#include <memory>

namespace {

constexpr int CKeyLength = 32;
constexpr int CNonceLength = 12;
constexpr int CTagLength = 16;
constexpr int CKdfIterations = 100000;
constexpr char CKdfSalt[] = "Vellmor.vlmQuorvexITSM.secrets";

using TKey = std::array<unsigned char, CKeyLength>;

// Derived once per process: the derivation is deliberately slow.
const TKey &CipherKey()
{
  static const TKey key = [] {
    TKey derived{};
    if (PKCS5_PBKDF2_HMAC(CCipherPassword, static_cast<int>(std::strlen(CCipherPassword)),
                          reinterpret_cast<const unsigned char *>(CKdfSalt), sizeof(CKdfSalt) - 1,
                          CKdfIterations, EVP_sha256(), CKeyLength, derived.data()) != 1)
      throw ESecretError(QStringLiteral("The key of the stored secrets cannot be derived (OpenSSL PBKDF2)"));
    return derived;
  }();
  return key;
}

using TCipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

TCipherContext NewContext()
{
  TCipherContext context(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
  if (!context)
    throw ESecretError(QStringLiteral("OpenSSL cannot allocate a cipher context"));
  return context;
}

unsigned char *Bytes(QByteArray &array) { return reinterpret_cast<unsigned char *>(array.data()); }
const unsigned char *Bytes(const QByteArray &array)
{
  return reinterpret_cast<const unsigned char *>(array.constData());
}

QByteArray Seal(const QByteArray &plain)
{
  QByteArray sealed(CNonceLength + plain.size() + CTagLength, Qt::Uninitialized);
  unsigned char *nonce = Bytes(sealed);
  unsigned char *cipherText = nonce + CNonceLength;
  unsigned char *tag = cipherText + plain.size();
  if (RAND_bytes(nonce, CNonceLength) != 1)
    throw ESecretError(QStringLiteral("OpenSSL has no random bytes for the cipher"));

  TCipherContext context = NewContext();
  int length = 0;
  if (EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, CipherKey().data(), nonce) != 1 ||
      EVP_EncryptUpdate(context.get(), cipherText, &length, Bytes(plain), static_cast<int>(plain.size())) != 1 ||
      EVP_EncryptFinal_ex(context.get(), cipherText + length, &length) != 1 ||
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, CTagLength, tag) != 1)
    throw ESecretError(QStringLiteral("OpenSSL refused to encipher a secret"));
  return sealed;
}

QByteArray Open(const QByteArray &sealed)
{
  if (sealed.size() < CNonceLength + CTagLength)
    throw ESecretError(QStringLiteral("the stored secret is too short"));
  const unsigned char *nonce = Bytes(sealed);
  const unsigned char *cipherText = nonce + CNonceLength;
  const int cipherLength = static_cast<int>(sealed.size()) - CNonceLength - CTagLength;
  QByteArray tag = sealed.right(CTagLength);

  QByteArray plain(cipherLength, Qt::Uninitialized);
  TCipherContext context = NewContext();
  int length = 0;
  int finalLength = 0;
  if (EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, CipherKey().data(), nonce) != 1 ||
      EVP_DecryptUpdate(context.get(), Bytes(plain), &length, cipherText, cipherLength) != 1 ||
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, CTagLength, tag.data()) != 1 ||
      EVP_DecryptFinal_ex(context.get(), Bytes(plain) + length, &finalLength) != 1)
    throw ESecretError(QStringLiteral("the stored secret fails authentication"));
  return plain;
}

QByteArray DecodeBase64(const QByteArray &text, const char *level)
{
  const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
  if (!decoded || (decoded.decoded.isEmpty() && !text.isEmpty()))
    throw ESecretError(QStringLiteral("the %1 Base64 of the stored secret is damaged").arg(QLatin1String(level)));
  return decoded.decoded;
}

} // namespace

std::jthread DeriveKeyAhead()
{
  return std::jthread([] {
    try {
      CipherKey();
    } catch (const ESecretError &) {
      // Not derived: the first Encrypt or Decrypt derives it again and raises the failure.
    }
  });
}

QString Encrypt(const QString &value)
{
  if (TrimBlanks(value).isEmpty())
    return QString();
  const QByteArray inner = Seal(value.toUtf8()).toBase64();
  return QString::fromLatin1(inner.toBase64());
}

QString Decrypt(const QString &value)
{
  if (value.isEmpty())
    return QString();
  QByteArray outer = value.toLatin1();
  outer.replace('\r', QByteArray()).replace('\n', QByteArray());
  const QByteArray inner = DecodeBase64(outer, "outer");
  return QString::fromUtf8(Open(DecodeBase64(inner, "inner")));
}

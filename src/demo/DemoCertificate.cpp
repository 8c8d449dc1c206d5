#include "DemoCertificate.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <functional>
#include <memory>
#include <string>
#include <stdexcept>

namespace {

template <auto Free>
struct TOpenSslDeleter
{
  template <typename T>
  void operator()(T *value) const { Free(value); }
};
using TKey = std::unique_ptr<EVP_PKEY, TOpenSslDeleter<EVP_PKEY_free>>;
using TCertificate = std::unique_ptr<X509, TOpenSslDeleter<X509_free>>;
using TBio = std::unique_ptr<BIO, TOpenSslDeleter<BIO_free>>;
using TExtension = std::unique_ptr<X509_EXTENSION, TOpenSslDeleter<X509_EXTENSION_free>>;

void Check(bool ok, const char *step)
{
  if (!ok)
    throw std::runtime_error(std::string("Cannot make the demo certificate: ") + step + " failed");
}

void AddExtension(X509 *certificate, int nid, const char *value)
{
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  const TExtension extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value));
  Check(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

QByteArray PemOf(const std::function<int(BIO *)> &write)
{
  const TBio bio(BIO_new(BIO_s_mem()));
  Check(bio && write(bio.get()) == 1, "PEM writing");
  char *data = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &data);
  return QByteArray(data, static_cast<qsizetype>(size));
}

} // namespace

TDemoCertificate MakeDemoCertificate()
{
  const TKey key(EVP_EC_gen("P-256"));
  Check(key != nullptr, "key generation");

  const TCertificate certificate(X509_new());
  Check(certificate != nullptr, "X509_new");
  X509 *const x509 = certificate.get();
  Check(X509_set_version(x509, 2) == 1, "version");
  unsigned char serial[8];
  Check(RAND_bytes(serial, sizeof serial) == 1, "serial number");
  serial[0] &= 0x7f; // a positive number
  BIGNUM *number = BN_bin2bn(serial, sizeof serial, nullptr);
  Check(number && BN_to_ASN1_INTEGER(number, X509_get_serialNumber(x509)), "serial number");
  BN_free(number);
  Check(X509_gmtime_adj(X509_getm_notBefore(x509), -3600) != nullptr, "start date");
  Check(X509_gmtime_adj(X509_getm_notAfter(x509), 30L * 24 * 3600) != nullptr, "end date");
  Check(X509_set_pubkey(x509, key.get()) == 1, "public key");
  X509_NAME *const name = X509_get_subject_name(x509);
  const auto *commonName = reinterpret_cast<const unsigned char *>("Quorvex ITSM demo service");
  Check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, commonName, -1, -1, 0) == 1, "subject");
  Check(X509_set_issuer_name(x509, name) == 1, "issuer");
  AddExtension(x509, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
  AddExtension(x509, NID_key_usage, "critical,digitalSignature,keyCertSign");
  AddExtension(x509, NID_ext_key_usage, "serverAuth");
  AddExtension(x509, NID_subject_key_identifier, "hash");
  AddExtension(x509, NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost");
  Check(X509_sign(x509, key.get(), EVP_sha256()) > 0, "signature");

  TDemoCertificate result;
  result.CertificatePem = PemOf([x509](BIO *bio) { return PEM_write_bio_X509(bio, x509); });
  result.KeyPem = PemOf([&key](BIO *bio) {
    return PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
  return result;
}

#pragma once

#include <QByteArray>

// A fresh self-signed certificate and its private key, both PEM, made at start
// for 127.0.0.1 and localhost. Clients trust the demo service by adding this
// certificate to their trusted authorities; the key never leaves the process.
struct TDemoCertificate
{
  QByteArray CertificatePem;
  QByteArray KeyPem;
};

// Raises std::runtime_error when OpenSSL cannot make them.
TDemoCertificate MakeDemoCertificate();

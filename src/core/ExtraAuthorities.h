#pragma once

#include <QList>
#include <QSslCertificate>

// The environment variable naming a PEM file of certificate authorities trusted,
// besides the system's, by HTTPS and SMTP alike.
inline constexpr char CExtraCaVariable[] = "QUORVEX_EXTRA_CA_CERTS";

// The certificates of the file named by QUORVEX_EXTRA_CA_CERTS; none when the
// variable is unset or empty. Raises EReadError naming the variable and the file
// when the file cannot be read or holds no PEM certificate, so that the person
// learns why a server would otherwise be "not trusted".
QList<QSslCertificate> ExtraAuthorities();

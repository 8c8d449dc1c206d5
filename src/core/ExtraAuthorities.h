#pragma once

#include <QList>
#include <QSslCertificate>
#include <QString>

// The environment variable naming a PEM file of certificate authorities trusted,
// besides the system's, by HTTPS and SMTP alike.
inline constexpr char CExtraCaVariable[] = "QUORVEX_EXTRA_CA_CERTS";

// The same file chosen in the settings ([QuorvexITSM] CaFile); the variable,
// when set, wins. Empty: none.
void SetConfiguredAuthorities(const QString &pemFile);
QString ConfiguredAuthorities();

// Where the extra authorities come from, for a person: the variable or the
// setting, and the file; empty when none is named.
struct TAuthoritiesSource
{
  QString Origin; // "QUORVEX_EXTRA_CA_CERTS" or "the \"Certificate authorities\" setting"
  QString File;
};
TAuthoritiesSource ExtraAuthoritiesSource();

// The certificates of that file; none when no file is named. Raises EReadError
// naming where the file was named and the file when it cannot be read or holds
// no PEM certificate, so that the person learns why a server would otherwise be
// "not trusted".
QList<QSslCertificate> ExtraAuthorities();

#pragma once

#include <QString>
#include <thread>

// Protection of the secrets kept in the settings file (API client secret and
// password, SMTP password). It keeps them from casual reading: the key is derived
// from a constant of the program, the same for every installation.
//
// Stored form: Base64 (one line) of the Base64 text of nonce + ciphertext + tag,
// AES-256-GCM over the UTF-8 bytes of the secret. A blank-only secret is stored as
// the empty string, and the empty string never touches the cipher.

// Raises nothing; the result differs on every call (random nonce).
QString Encrypt(const QString &value);

// Line breaks in `value` are ignored. Raises ESecretError when the value is not in
// the stored form or fails authentication.
QString Decrypt(const QString &value);

// Starts deriving the cipher key on a thread of its own (the derivation is
// deliberately slow), so that the program's start-up goes on meanwhile and the
// first Encrypt or Decrypt waits only for what is left. The thread ends with
// the derivation; a failure there is raised by the first Encrypt or Decrypt.
std::jthread DeriveKeyAhead();

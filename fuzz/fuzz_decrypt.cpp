// Stored secrets, any text: deciphered or refused with ESecretError, nothing else.

#include "FuzzSupport.h"
#include "core/Errors.h"
#include "core/SecretCodec.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
  FuzzInitialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  try {
    Decrypt(QString::fromUtf8(FuzzBytes(data, size)));
  } catch (const ESecretError &) {
  }
  return 0;
}

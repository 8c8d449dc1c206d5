// Service time stamps, any text: a date and time, or ERangeError, nothing else.

#include "FuzzSupport.h"
#include "core/Errors.h"
#include "core/uTools.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
  FuzzInitialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  try {
    RestTimestamp2DateTime(QString::fromUtf8(FuzzBytes(data, size)));
  } catch (const ERangeError &) {
  }
  return 0;
}

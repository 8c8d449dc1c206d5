#pragma once

#include "core/Errors.h"

// The service could not be reached or did not answer: refused connection, unknown
// host, untrusted certificate, time-out. The message names the address concerned.
class ERestTransportError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

// An answer of the service that lacks what the program must read from it.
class ERestFormatError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

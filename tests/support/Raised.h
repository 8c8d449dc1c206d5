#pragma once

#include "core/Errors.h"

// The message of the error of type E that `action` raises; empty when it raises none.
template <typename E, typename TAction> QString MessageRaised(TAction action)
{
  try {
    action();
  } catch (const E &error) {
    return error.Message();
  }
  return {};
}

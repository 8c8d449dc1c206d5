#pragma once

#include "RestFailure.h"

#include <QStringList>
#include <optional>
#include <variant>

// What a call of the service client gave: its value (what could be retrieved,
// often an empty list after a failure) and, when it could not retrieve
// everything, the first failure. An empty list the service really gave is not a
// failure. Ignoring a result is a compile-time warning, so that no caller can
// forget to read the failure.
template <class T = std::monostate>
struct [[nodiscard]] TRestResult
{
  T Value{};
  std::optional<TFailure> Failure;
  // What the call could read but not wholly (operators left out of a page...),
  // one line each for the run log's WARNING lines.
  QStringList Warnings;

  bool Failed() const { return Failure.has_value(); }
};

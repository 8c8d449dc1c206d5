#pragma once

#include <QByteArray>
#include <cstddef>
#include <cstdint>

// Shared by the fuzz targets: one application object (event loop, Qt's globals)
// for the whole run, and every logging category silenced.
void FuzzInitialize();

inline QByteArray FuzzBytes(const std::uint8_t *data, std::size_t size)
{
  return QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
}

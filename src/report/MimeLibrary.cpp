#include "MimeLibrary.h"

#include "GMime.h"
#include <mutex>

void StartMimeLibrary()
{
  static std::once_flag started;
  std::call_once(started, [] { g_mime_init(); });
}

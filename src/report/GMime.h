#pragma once

// GMime's headers (through GLib's) use "signals" as a name, which Qt defines as a
// keyword: include GMime through this header only.
#pragma push_macro("signals")
#undef signals
#include <gmime/gmime.h>
#pragma pop_macro("signals")

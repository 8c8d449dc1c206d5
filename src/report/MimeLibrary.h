#pragma once

// Starts GMime once for the whole program (its address parser and message
// writer need it); safe to call from any thread, any number of times.
void StartMimeLibrary();

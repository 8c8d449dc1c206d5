#pragma once

// The constant text from which the key of the stored secrets is derived.
extern const char *const CCipherPassword;

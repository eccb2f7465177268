#pragma once
// Symbols of the shared library are hidden by default; the facade and the few
// platform types a caller needs are exported explicitly.
#define OCW_API __attribute__((visibility("default")))

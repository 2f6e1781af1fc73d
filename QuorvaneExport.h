#pragma once

/// Marks a class or function as part of the shared library's interface. Everything without this mark is hidden.
#if defined(_WIN32)
#if defined(QUORVANE_BUILDING)
#define QUORVANE_EXPORT __declspec(dllexport)
#else
#define QUORVANE_EXPORT __declspec(dllimport)
#endif
#else
#define QUORVANE_EXPORT __attribute__((visibility("default")))
#endif

// Marks what the shared library offers. LTLIB_BUILDING is set while the library itself is built,
// LTLIB_STATIC where its objects are linked in without a shared library.
#ifndef LTLIB_EXPORT_H
#define LTLIB_EXPORT_H

#if defined(_WIN32) && defined(LTLIB_BUILDING)
#define LTLIB_EXPORT __declspec(dllexport)
#elif defined(_WIN32) && defined(LTLIB_STATIC)
#define LTLIB_EXPORT
#elif defined(_WIN32)
#define LTLIB_EXPORT __declspec(dllimport)
#else
#define LTLIB_EXPORT __attribute__((visibility("default")))
#endif

#endif  // LTLIB_EXPORT_H

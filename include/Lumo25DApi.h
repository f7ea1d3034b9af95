#ifndef LUMO25D_API_H
#define LUMO25D_API_H

/// LUMO25D_API marks what the shared library exports; everything else is hidden.
#if defined(_WIN32)
#if defined(LUMO25D_BUILDING)
#define LUMO25D_API __declspec(dllexport)
#else
#define LUMO25D_API __declspec(dllimport)
#endif
#else
#define LUMO25D_API __attribute__((visibility("default")))
#endif

#endif

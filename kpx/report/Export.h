#pragma once

/// KPX_API marks what the shared library exports; everything else stays hidden inside it.
/// A program that links the static library defines KPX_STATIC.
#if defined(KPX_STATIC)
#define KPX_API
#elif (defined(_MSC_VER) || defined(__declspec)) && defined(KPX_BUILDING)
#define KPX_API __declspec(dllexport)
#elif defined(_MSC_VER) || defined(__declspec)
#define KPX_API __declspec(dllimport)
#else
#define KPX_API __attribute__((visibility("default")))
#endif

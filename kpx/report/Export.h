#pragma once

/// KPX_API marks what the shared library exports; everything else stays hidden inside it.
/// A program that links the static library defines KPX_STATIC. It stands at functions; at a class
/// as a whole where callers need all of it: its virtual functions, or what they derive from it.
/// KPX_LOCAL takes the private functions of such a class out again, where a system can.
#if defined(KPX_STATIC)
#define KPX_API
#elif (defined(_MSC_VER) || defined(__declspec)) && defined(KPX_BUILDING)
#define KPX_API __declspec(dllexport)
#elif defined(_MSC_VER) || defined(__declspec)
#define KPX_API __declspec(dllimport)
#else
#define KPX_API __attribute__((visibility("default")))
#define KPX_LOCAL __attribute__((visibility("hidden")))
#endif
#ifndef KPX_LOCAL
#define KPX_LOCAL
#endif

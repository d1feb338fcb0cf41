#pragma once

/// \file
/// FCURVELIB_API marks what leaves the library. A host that links the sources in another way may define it beforehand.

#ifndef FCURVELIB_API
#if defined(FCURVELIB_STATIC)
#define FCURVELIB_API
#elif defined(_WIN32)
#ifdef FCURVELIB_BUILDING
#define FCURVELIB_API __declspec(dllexport)
#else
#define FCURVELIB_API __declspec(dllimport)
#endif
#else
#define FCURVELIB_API __attribute__((visibility("default")))
#endif
#endif

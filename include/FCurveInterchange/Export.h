#pragma once

/// \file
/// FCURVEINTERCHANGE_API marks what leaves the library FCurveInterchange, as FCURVELIB_API does for the library under
/// it.

#ifndef FCURVEINTERCHANGE_API
#if defined(FCURVEINTERCHANGE_STATIC)
#define FCURVEINTERCHANGE_API
#elif defined(_WIN32)
#ifdef FCURVEINTERCHANGE_BUILDING
#define FCURVEINTERCHANGE_API __declspec(dllexport)
#else
#define FCURVEINTERCHANGE_API __declspec(dllimport)
#endif
#else
#define FCURVEINTERCHANGE_API __attribute__((visibility("default")))
#endif
#endif

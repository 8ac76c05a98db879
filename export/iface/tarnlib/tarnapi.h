#pragma once

/// How the library's names cross the DLL boundary.
///
/// - TARN_API marks classes, functions, data and explicit template instantiations.
/// - TARN_MEM marks members that are defined inside an exported class template: a client may inline them, the DLL
///   exports them for clients that are compiled without optimisation.
///
/// Define TARN_STATIC for a program that holds the library's sources itself (test builds do).
#if defined(TARN_STATIC)
/// In front of a declaration: the DLL exports it, its clients import it.
#define TARN_API
/// In front of a member with a body, in an exported class template: the DLL exports it, its clients may inline it.
#define TARN_MEM
#elif defined(tarnlib_EXPORTS)
#define TARN_API __declspec(dllexport)
#define TARN_MEM __declspec(dllexport)
#else
#define TARN_API __declspec(dllimport)
#define TARN_MEM
#endif

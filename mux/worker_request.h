// The requests that the worker thread knows, and its replies.
#pragma once

#include "win/platform.h"

inline constexpr DWORD kWorkerExit = 0;
inline constexpr DWORD kWorkerIdle = 1; // only a reply; nobody sends it
inline constexpr DWORD kWorkerRun = 2;

inline constexpr DWORD kWorkerDone = 0;
inline constexpr DWORD kWorkerRefused = 0xFFFFFFFF;

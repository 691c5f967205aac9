// CBaseObject: counts the living objects of the module, so that it is not unloaded under one of them.
//
// Owner: base of every object that the module hands out. Threads: any.
#pragma once

#include "win/platform.h"

class CBaseObject {
  public:
    // The name is for the debugger's reader only; nothing keeps it.
    explicit CBaseObject(const WCHAR* name) noexcept;
    CBaseObject(const CBaseObject&) = delete;
    CBaseObject& operator=(const CBaseObject&) = delete;

    static LONG ObjectsActive() noexcept;

  protected:
    ~CBaseObject();
};

// Filters in the filter mapper, from their setup records.
//
// Errors: the mapper's; removing a filter that is not registered succeeds.
#pragma once

#include "dshow/factory_template.h"
#include "win/platform.h"

// Registers the filter with its merit and pins, or removes it.
HRESULT AMovieSetupRegisterFilter2(const AMOVIESETUP_FILTER* psetupdata, IFilterMapper2* pIFM2,
                                   BOOL bRegister) noexcept;
// The same through the system's filter mapper, on a thread that has entered COM.
HRESULT AMovieSetupRegisterFilter(const AMOVIESETUP_FILTER* psetupdata, BOOL bRegister) noexcept;

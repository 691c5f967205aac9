// Identifiers of the test program's own dialog.
#pragma once

#define IDD_HOST 500
#define IDC_PAGE_AREA 501

// Identifiers of the module's resources.
#pragma once

#define IDD_ABOUT_PAGE 9
#define IDS_ABOUT_TITLE 102
#define IDS_SETTINGS_TITLE 103
#define IDD_SETTINGS_PAGE 104
#define IDI_MUXER 105

// Controls of the about page
#define IDC_PRODUCT_NAME 1001
#define IDC_VERSION 1002
#define IDC_PICTURE 1003
#define IDC_PURPOSE 1004
#define IDC_LICENCE 1005

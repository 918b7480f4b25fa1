// Common controls: image lists, tree views, up-down controls, progress bars, property sheets. Main thread.
#pragma once

#include "platform/window.h"

#ifdef _WIN32

#include "platform/win32/wrapped.h"
#define PropertySheetW TerminalPropertySheetW
#define GetMessagePos TerminalGetMessagePos

#else

struct IMAGELIST_TAG;
using HIMAGELIST = IMAGELIST_TAG*;

struct INITCOMMONCONTROLSEX {
    DWORD dwSize;
    DWORD dwICC;
};
#define ICC_TREEVIEW_CLASSES 0x00000002
#define ICC_UPDOWN_CLASS 0x00000010
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes);

#define ILC_MASK 0x00000001
HIMAGELIST ImageList_Create(int width, int height, UINT flags, int initial, int grow);
int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask);
int ImageList_GetImageCount(HIMAGELIST list);
BOOL ImageList_SetImageCount(HIMAGELIST list, UINT count);
BOOL ImageList_Destroy(HIMAGELIST list);

#define NM_FIRST 0u
#define NM_CLICK (NM_FIRST - 2u)

// Tree views.
struct TREEITEM_TAG;
using HTREEITEM = TREEITEM_TAG*;

#define TVIF_TEXT 0x0001
#define TVIF_IMAGE 0x0002
#define TVIF_PARAM 0x0004
#define TVIF_STATE 0x0008
#define TVIF_HANDLE 0x0010
#define TVIF_SELECTEDIMAGE 0x0020
#define TVIF_CHILDREN 0x0040
#define TVIS_STATEIMAGEMASK 0xF000
#define INDEXTOSTATEIMAGEMASK(index) ((index) << 12)
#define TVI_ROOT (reinterpret_cast<HTREEITEM>(static_cast<ULONG_PTR>(-0x10000)))
#define TVI_LAST (reinterpret_cast<HTREEITEM>(static_cast<ULONG_PTR>(-0xFFFE)))
#define TVSIL_STATE 2
#define TVGN_NEXT 0x0001
#define TVGN_PREVIOUS 0x0002
#define TVGN_PARENT 0x0003
#define TVGN_CHILD 0x0004
#define TVGN_ROOT 0x0000
#define TVGN_CARET 0x0009
#define TVHT_ONITEMSTATEICON 0x0040
#define TVHT_ONITEMLABEL 0x0004

struct TVITEMW {
    UINT mask;
    HTREEITEM hItem;
    UINT state;
    UINT stateMask;
    LPWSTR pszText;
    int cchTextMax;
    int iImage;
    int iSelectedImage;
    int cChildren;
    LPARAM lParam;
};
struct TVITEMEXW : TVITEMW {
    int iIntegral;
};
struct TVINSERTSTRUCTW {
    HTREEITEM hParent;
    HTREEITEM hInsertAfter;
    union {
        TVITEMEXW itemex;
        TVITEMW item;
    };
};
struct TVHITTESTINFO {
    POINT pt;
    UINT flags;
    HTREEITEM hItem;
};
struct NMTVKEYDOWN {
    NMHDR hdr;
    WORD wVKey;
    UINT flags;
};

#define TVM_DELETEITEM 0x1101
#define TVM_SETIMAGELIST 0x1109
#define TVM_GETNEXTITEM 0x110A
#define TVM_SELECTITEM 0x110B
#define TVM_HITTEST 0x1111
#define TVM_INSERTITEMW 0x1132
#define TVM_GETITEMW 0x113E
#define TVM_SETITEMW 0x113F
#define TVN_FIRST (0u - 400u)
#define TVN_KEYDOWN (TVN_FIRST - 12u)

// Up-down controls and progress bars.
#define UDM_SETRANGE32 (WM_USER + 111)
#define PBM_SETRANGE (WM_USER + 1)
#define PBM_SETPOS (WM_USER + 2)

// Property sheets.
struct PSP;
using HPROPSHEETPAGE = PSP*;
using PFNPROPSHEETCALLBACK = int(CALLBACK*)(HWND, UINT, LPARAM);
struct PROPSHEETPAGEW;
using LPFNPSPCALLBACKW = UINT(CALLBACK*)(HWND, UINT, PROPSHEETPAGEW*);

struct PROPSHEETPAGEW {
    DWORD dwSize;
    DWORD dwFlags;
    HINSTANCE hInstance;
    union {
        LPCWSTR pszTemplate;
        LPCVOID pResource;
    };
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszTitle;
    DLGPROC pfnDlgProc;
    LPARAM lParam;
    LPFNPSPCALLBACKW pfnCallback;
    UINT* pcRefParent;
};
struct PROPSHEETHEADERW {
    DWORD dwSize;
    DWORD dwFlags;
    HWND hwndParent;
    HINSTANCE hInstance;
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszCaption;
    UINT nPages;
    union {
        UINT nStartPage;
        LPCWSTR pStartPage;
    };
    union {
        const PROPSHEETPAGEW* ppsp;
        HPROPSHEETPAGE* phpage;
    };
    PFNPROPSHEETCALLBACK pfnCallback;
};

#define PSP_USETITLE 0x00000008
#define PSH_PROPSHEETPAGE 0x00000008
#define PSH_NOAPPLYNOW 0x00000080  // no button for it
#define PSH_USECALLBACK 0x00000100
#define PSH_MODELESS 0x00000400
#define PSCB_INITIALIZED 1
#define PSM_ISDIALOGMESSAGE (WM_USER + 117)
#define PSN_FIRST (0u - 200u)
#define PSN_APPLY (PSN_FIRST - 2u)
#define PSN_QUERYCANCEL (PSN_FIRST - 9u)

// A modeless sheet (PSH_MODELESS): returns its window, or 0 or -1 on failure.
INT_PTR PropertySheetW(const PROPSHEETHEADERW* header);

#endif

// What desktop Windows lacks.
#ifdef _WIN32
#define PSH_MAXIMIZE 0  // its number is another flag's there
#else
#define PSH_MAXIMIZE 0x00002000
#endif
#define PSCB_GETVERSION 3

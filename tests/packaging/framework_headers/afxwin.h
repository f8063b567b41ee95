// Just enough of the application framework for the message box.
#pragma once
#include <windows.h>
int AfxMessageBox(const wchar_t* text, UINT type = MB_OK, UINT helpId = static_cast<UINT>(-1));

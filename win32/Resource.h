// Numbers that the resource script and the program share. The dialog's control ids stand in
// app/dialog/DialogView.h; the script, which cannot read that, repeats them as numbers.
#pragma once

#define IDD_ABOUT 100
#define IDS_ABOUT 101
#define IDD_TREVOLT 102
#define IDI_TREVOLT 128
#define IDM_ABOUT 16

#pragma once
// Every resource id of keldesk.exe. Read by the compiler and the resource compiler alike.

#define IDR_DESK 1

// File.
#define IDM_NEW_SESSION 104
#define IDM_RUN_SCRIPT 100
#define IDM_CHECK_SCRIPT 101
#define IDM_LOG 102
#define IDM_EXIT 103
// The recent scripts, as many as are kept.
#define IDM_RECENT_FIRST 120
#define IDM_RECENT_LAST 129
// Connect.
#define IDM_CONNECT_SERIAL 140
#define IDM_CONNECT_NETWORK 142
#define IDM_DISCONNECT 141
// Instrument.
#define IDM_FIRMWARE 143
#define IDM_PRESSURE_OFFSET 144
#define IDM_RECORDER 145
#define IDM_COMPASS 146
// Script.
#define IDM_CANCEL_SCRIPT 150
#define IDM_VARIABLES 151
#define IDM_FINDINGS 152
// View.
#define IDM_OUTPUT_TEXT 160
#define IDM_OUTPUT_BACKGROUND 161
#define IDM_COMMAND_TEXT 162
#define IDM_COMMAND_BACKGROUND 163
#define IDM_FONT 164
#define IDM_COMMAND_LINE 165
#define IDM_TIME_STAMPS 166
#define IDM_CLEAR 167
#define IDM_FIND 168
#define IDM_COPY_OUTPUT 169
// Help.
#define IDM_ABOUT 180

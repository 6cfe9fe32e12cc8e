/// Message types and destinations.
#pragma once

// Message types, one bit each.
inline constexpr short ZR_MSG_OUT = 1;
inline constexpr short ZR_MSG_WARN = 2;
inline constexpr short ZR_MSG_ERROR = 4;
inline constexpr short ZR_MSG_TRACE = 8;

// The levels of messages, which are carried but never compared.
inline constexpr short ZR_LEVEL_FIRST = 1;
inline constexpr short ZR_LEVEL_LAST = 7;

// Destinations, one bit each; a flag word is a sum of them.
inline constexpr short ZR_DEST_MSGVIEW = 1; // stored and returned; the library sends nothing there
inline constexpr short ZR_DEST_CONSOLE = 2; // standard output
inline constexpr short ZR_DEST_DEBUGGER = 4; // the debugger's output; on Linux standard error
inline constexpr short ZR_DEST_FILE = 8; // the log file zr_messages.txt in the home directory

/// The terminal that a program writes to.
#pragma once

/// Whether standard output is a terminal that understands escape sequences (ECMA-48).
bool IsTerminal();

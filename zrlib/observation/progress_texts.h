/// The texts of the progress state. Not exported.
#pragma once

class HCString;

extern HCString& g_csProgressTitle;
extern HCString& g_csProgressUpdateText;

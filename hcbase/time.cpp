#include "hcbase/time.h"

HCTime::~HCTime() = default;

#include "orvane/effects/SkySettings.h"

SkySettings SkySettings::m_Inst;

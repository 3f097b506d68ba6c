// The values of settings that decisions know by name.
#pragma once

enum eImagerTypes { eMinimodule_10m, e60meter, e30meter, eNoImagerAttached, eImagerTypeEnd };

enum eUnitofMeasure { eMeter, eFeet };

// The launch descriptions of the live video input pipeline, as text.
#pragma once

#include "media/boardelements.h"
#include "media/gst_includes.h"

// The layout to build for a pipeline mode: the four modes that have one, else live. A mode that still holds
// an error mark (or a value of another pipeline) therefore rebuilds the live picture.
eGstreamerState layoutForMode(eGstreamerState mode);

// The launch description of a layout over the board's elements.
QString videoInputLaunch(eGstreamerState layout, const ElementRoles &roles);

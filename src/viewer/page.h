// The page itself, its style and its script: part of the program.
#pragma once

#include "viewer/response.h"

namespace viewer {

// "/", "/page.css", "/page.js"; anything else is not found.
Reply pageReply(const QByteArray &address);

} // namespace viewer

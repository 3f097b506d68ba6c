// What a request gets: the page, the live picture, the card's files. Runs on the connection's own thread.
#pragma once

#include "viewer/server.h"

#include <microhttpd.h>

namespace viewer {

// `address` is percent-encoded as it came; `isReading`: by GET or HEAD. MHD_NO closes the connection.
MHD_Result answer(const Context &context, MHD_Connection *connection, const char *address, bool isReading);

} // namespace viewer

// The live picture as a browser's <img> takes it: JPEGs one after another in one answer that does not end.
#pragma once

#include "viewer/response.h"
#include "viewer/server.h"

#include <QString>

namespace viewer {

Reply liveReply(const Context &context, MHD_Connection *connection, const QString &);

} // namespace viewer

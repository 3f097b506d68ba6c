// Answers made of the card: files in whole or in part, a folder as an archive, the first picture of a film.
#pragma once

#include "viewer/response.h"
#include "viewer/server.h"

#include <QString>

namespace viewer {

Reply fileReply(const Context &context, MHD_Connection *connection, const QString &name);
Reply archiveReply(const Context &context, MHD_Connection *connection, const QString &folder);
Reply firstPictureReply(const Context &context, MHD_Connection *connection, const QString &name);
Reply foldersReply(const Context &context, MHD_Connection *connection, const QString &);
Reply capturesReply(const Context &context, MHD_Connection *connection, const QString &folder);

} // namespace viewer

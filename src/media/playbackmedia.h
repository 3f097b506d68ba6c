// What the pipelines of films and voice notes share.
#pragma once

#include "media/gst_includes.h"

#include <QString>
#include <QtGlobal>

// The element (or bin, with its open pads) that a role's launch fragment describes, named `name`; null with a
// line on standard error when it cannot be made. The caller takes the floating reference.
GstElement *roleElement(const QString &fragment, const char *name);

// Prints an error or warning message in the words that the service staff know, to standard error.
void printMediaFault(GstMessage *message);

// Prints "WHO: [element]: OLD -> NEW" for a state-change message.
void printStateChange(const char *who, GstMessage *message);

// Whole percent of `length` at `position`, both in nanoseconds: 0..100, 0 for an unknown length.
quint8 percentPlayed(qint64 position, quint64 length);

// The log of an inspection folder: a page that the customer opens, and its twin in plain text. GUI thread.
// All functions work on the current folder (g_SavedFSInfo.currRootDirectory).
#pragma once

#include "platform/unit.h"

#include <QByteArray>
#include <QString>
#include <QTime>

enum eLogFileOperation {
    eImageCapture,
    eVideoStart,
    eVideoStop,
    eFileDelete,
    eFileRename,
    eDamageCatelogChange
};

// Puts the page's style and pictures into ".html_assets"; what is there already is left as it is.
void createHTMLAssets();

// Makes the folder's page from the template, unless it has one. `folder` as CreateDCIMStructure was given it:
// empty for the folder of the day.
void createLogHTMLlog(const UnitPath &folder);

// Adds one event to page and text file. `meter`: centimetres, never less the offset; above 32767, which is a
// negative count, the length is not known ("---.--"). `fileName` counts for captures, films and
// deletions, `text` for renames and damage notes. One write a file, then sync: the cost does not grow
// with the page, unless somebody has written behind its table. Without a page nothing is logged; a page
// without "</table>" keeps its bytes and only the text line is added. `time`: of the event.
void UpdateLogFiles(eLogFileOperation operation, unsigned short meter, const QString &fileName,
                    const QString &text, const QTime &time = QTime::currentTime());

// Mends what a write that was cut off has torn: closes the page again after its last whole row, and completes
// or adds the text file's last line from the page. What is not the torn end of a row of ours stays, byte for
// byte.
void mendInspectionLog();

namespace inspectionlog {

// The two texts of one event. `name`: file name, or the trimmed text for renames and notes.
struct Entry
{
    QByteArray row;
    QByteArray line;
};
Entry entry(eLogFileOperation operation, unsigned short meter, const QString &time, const QString &name);

} // namespace inspectionlog

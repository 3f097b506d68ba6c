// Pipelines of a unit whose camera is a test picture.
#pragma once

#include "testunit.h"

#include "media/boardelements.h"
#include "media/gst_videoinput.h"

#include <QTest>

// Once a process, before the first pipeline.
inline void startMedia()
{
    gst_init(nullptr, nullptr);
    for (quint8 *&buffer : g_pcFrameBuffer)
        buffer = static_cast<quint8 *>(calloc(1, kFrameBytes));
}

// Elements that every machine with the base plug-ins has, and `camera`.
inline void useCamera(const TestUnit &folder, const QByteArray &camera, const QByteArray &more = {})
{
    folder.put(QStringLiteral("/home/root/tubix4_app/board.conf"),
               "[roles]\ndisplay=fakesink sync=true\nconverter=videoconvert\ncamera=" + camera + '\n' + more);
    resetBoardElementsForTests();
}

inline bool pictureRuns()
{
    const int before = nBuffers;
    return QTest::qWaitFor([&] { return nBuffers > before + 3; }, 20000);
}

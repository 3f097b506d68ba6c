// Element roles: which GStreamer elements fill the vendor's places on this board.
#pragma once

#include <QString>

// One launch fragment a role ("videoconvert", "lamemp3enc ! mpegaudioparse").
struct ElementRoles
{
    QString camera;
    QString cameraQueueOption; // property that deepens the capture queue, where the source has one
    QString display;
    QString converter;
    QString jpegEncoder;
    QString mp3Encoder;
    QString microphone;
    QString speaker;
};

// True when the display role puts the picture on the screen by itself; false when the GUI has to draw it.
bool displayDraws(const ElementRoles &roles);

// `fragment` with `properties` added to its first element: ("a x=1 ! b", "name=n") gives "a x=1 name=n ! b".
QString withProperties(const QString &fragment, const QString &properties);

// The roles of this unit, found once: board.conf first, then the first candidate that is installed. A role
// that nothing fills is named on standard error together with the package that has it. After gst_init; GUI
// thread.
const ElementRoles &boardElements();

// The display role could not be opened on this machine: from the next build on the GUI draws. Says so, once.
void giveUpDisplay();

// Forgets the found roles, so that a test starts on another unit.
void resetBoardElementsForTests();

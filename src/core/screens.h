// What is seen and what can be touched on each screen, as a function of a few facts. No widgets: those are
// named as the form names them.
#pragma once

#include "core/states.h"

#include <span>

// All that decides what the screen shows besides texts and pictures.
struct ScreenFacts
{
    ScreenKind screen = ScreenKind::Live; // never AsBefore
    eMainStates state = eStateLive;
    bool hasCard = false;   // mounted and taken
    bool guiDraws = true;   // the window paints the live picture; else an overlay plane shows it
    bool isBusy = false;    // an action's sign
    bool hasPicture = true; // of the camera, of this moment

    // The thumbnail pages and the selected file.
    int page = 1;
    int pages = 1;
    bool isVideo = false;
    bool isAnnotated = false; // has a voice note
    bool isReadable = true;   // its picture or first frame
    bool hasMicrophone = true;
    bool goesOut = false; // the film's pipeline gets its time to go

    bool hasMiniModule = false; // the tools page offers the choice of a camera head
    bool isCatalogOpen = false; // over the live picture
};

struct WidgetRule
{
    const char *widget;
    bool (*isVisible)(const ScreenFacts &); // null: always
    bool (*isEnabled)(const ScreenFacts &); // null: always
};

// Every widget of the main window whose visibility or touch depends on the screen.
std::span<const WidgetRule> widgetRules();

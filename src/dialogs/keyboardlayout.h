// The layout of an on-screen keyboard: read from its file, labelled, placed on a grid. No widgets.
#pragma once

#include <QChar>
#include <QList>
#include <QString>

#include <array>
#include <optional>

class QIODevice;

enum eKeyboardState {
    eDefault,
    eShifted,
    eShiftLocked, // no key leads to it
    eExtended1,
    eExtended2
};

enum eKeyboardSpecialFunction {
    eGenericKey,
    eShiftKey,
    eDeleteKey,
    eSpaceKey,
    eDoneKey,
    eExendedModeKey,
    eStaticPeriodKey,
    eStaticCommaKey
};

inline constexpr int kMostKeys = 38;

// One key: a character for each page (0: a key that types none) and whether a file name may hold it.
struct s_keyMapping
{
    QChar idx;
    QChar default_char;
    bool default_char_enabled = false;
    QChar shift_char;
    bool shift_char_enabled = false;
    QChar extended1_char;
    bool extended1_char_enabled = false;
    QChar extended2_char;
    bool extended2_char_enabled = false;
    eKeyboardSpecialFunction buttonFuntion = eGenericKey;
};

struct KeyboardLayout
{
    std::array<s_keyMapping, kMostKeys> keyMap; // the first g_num_keys, in the order of the screen
    qint8 g_row_one_keys = 0;
    qint8 g_row_two_keys = 0;
    qint8 g_row_three_keys = 0; // without the key that it starts with
    qint8 g_num_keys = 0;
};

// Where a key stands: grid cells, two columns for a letter.
struct KeyPlace
{
    int row;
    int column;
    int columns;
    int end() const { return column + columns; }
};

// The layout in `file` (open for reading), or nothing with the reason in `error`: another root element, more
// than 38 keys, a count or a character that cannot be, fewer or more keys than the file announces.
std::optional<KeyboardLayout> readKeyboardLayout(QIODevice *file, QString *error = nullptr);

QChar characterOf(const s_keyMapping &key, eKeyboardState state); // null for a key that types none

// False for a key whose character of this state the mask hides.
bool isOffered(const s_keyMapping &key, eKeyboardState state, bool masked);

// What stands on a key. The shift key names its page; the extended key shows the start of the page that it
// leads to, so that it needs no word; delete, space and done have none.
QString keyLabel(const KeyboardLayout &layout, int key, eKeyboardState state);

eKeyboardState stateAfter(eKeyboardState state, eKeyboardSpecialFunction pressed);

// Whether a character that comes from elsewhere (another keyboard, a paste) may get into the text: nothing
// unprintable, and under the mask what the layout offers, a blank, and letters and digits that it does not
// know.
bool mayBeTyped(const KeyboardLayout &layout, QChar character, bool masked);

// The place of every key, in their order. Rows one to three as the layout counts them; delete closes the
// third row where there is room, the others share the last one.
QList<KeyPlace> keyPlaces(const KeyboardLayout &layout);

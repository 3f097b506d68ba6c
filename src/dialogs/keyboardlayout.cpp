#include "dialogs/keyboardlayout.h"

#include <QIODevice>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

constexpr int kFewestForFullRow = 10;    // a shorter second row stands half a key to the right
constexpr int kFewestForNarrowShift = 8; // a third row with fewer keys has room for a wide shift key
constexpr int kLetter = 2;               // columns
constexpr int kNarrowestDelete = 2;

int readNumber(QXmlStreamReader &reader)
{
    bool isNumber = false;
    const int number = reader.readElementText().toInt(&isNumber);
    if (!isNumber || number < 0 || number > kMostKeys)
        reader.raiseError(QStringLiteral("Not a number of keys"));
    return reader.hasError() ? 0 : number;
}

// "71|1": a code point in hexadecimal, and whether the mask lets it pass.
void readCharacter(QXmlStreamReader &reader, QChar &character, bool &enabled)
{
    const QString text = reader.readElementText();
    bool isCode = false;
    const ushort code = text.section(QLatin1Char('|'), 0, 0).toUShort(&isCode, 16);
    const QString flag = text.section(QLatin1Char('|'), 1);
    enabled = flag == QLatin1String("1");
    if (!isCode || (!enabled && flag != QLatin1String("0")))
        reader.raiseError(QStringLiteral("Not a character: %1").arg(text));
    character = QChar(code);
}

void readCounts(QXmlStreamReader &reader, KeyboardLayout &layout)
{
    struct Count
    {
        QLatin1String name;
        qint8 KeyboardLayout::*field = nullptr;
    };
    static constexpr std::array kCounts = {
        Count{QLatin1String("row_one_keys"), &KeyboardLayout::g_row_one_keys},
        Count{QLatin1String("row_two_keys"), &KeyboardLayout::g_row_two_keys},
        Count{QLatin1String("row_three_keys"), &KeyboardLayout::g_row_three_keys},
        Count{QLatin1String("num_keys"), &KeyboardLayout::g_num_keys},
    };
    while (reader.readNextStartElement()) {
        const auto count = std::find_if(kCounts.begin(), kCounts.end(),
                                        [&](const Count &known) { return reader.name() == known.name; });
        if (count == kCounts.end())
            reader.skipCurrentElement();
        else
            layout.*count->field = static_cast<qint8>(readNumber(reader));
    }
}

s_keyMapping readKey(QXmlStreamReader &reader)
{
    struct Page
    {
        QLatin1String name;
        QChar s_keyMapping::*character = nullptr;
        bool s_keyMapping::*enabled = nullptr;
    };
    static constexpr std::array kPages = {
        Page{QLatin1String("default"), &s_keyMapping::default_char, &s_keyMapping::default_char_enabled},
        Page{QLatin1String("shifted"), &s_keyMapping::shift_char, &s_keyMapping::shift_char_enabled},
        Page{QLatin1String("extended1"), &s_keyMapping::extended1_char,
             &s_keyMapping::extended1_char_enabled},
        Page{QLatin1String("extended2"), &s_keyMapping::extended2_char,
             &s_keyMapping::extended2_char_enabled},
    };
    s_keyMapping key;
    while (reader.readNextStartElement()) {
        const auto page = std::find_if(kPages.begin(), kPages.end(),
                                       [&](const Page &known) { return reader.name() == known.name; });
        if (page != kPages.end()) {
            readCharacter(reader, key.*page->character, key.*page->enabled);
        } else if (reader.name() == QLatin1String("idx")) {
            key.idx = QChar(readNumber(reader));
        } else if (reader.name() == QLatin1String("function")) {
            const int function = readNumber(reader);
            if (function > eStaticCommaKey)
                reader.raiseError(QStringLiteral("Not a function of a key"));
            key.buttonFuntion = static_cast<eKeyboardSpecialFunction>(function);
        } else {
            reader.skipCurrentElement();
        }
    }
    return key;
}

void readKeyboard(QXmlStreamReader &reader, KeyboardLayout &layout)
{
    int keys = 0;
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("layout")) {
            readCounts(reader, layout);
        } else if (reader.name() != QLatin1String("key")) {
            reader.skipCurrentElement();
        } else if (keys == kMostKeys) {
            reader.raiseError(QStringLiteral("Too many keys"));
        } else {
            layout.keyMap[size_t(keys++)] = readKey(reader);
        }
    }
    if (reader.hasError())
        return;
    if (keys != layout.g_num_keys)
        reader.raiseError(QStringLiteral("%1 keys announced, %2 found").arg(layout.g_num_keys).arg(keys));
    else if (layout.g_row_one_keys + layout.g_row_two_keys + 1 + layout.g_row_three_keys > keys)
        reader.raiseError(QStringLiteral("The rows hold more keys than there are"));
}

bool isEnabled(const s_keyMapping &key, eKeyboardState state)
{
    switch (state) {
    case eShifted:
    case eShiftLocked:
        return key.shift_char_enabled;
    case eExtended1:
        return key.extended1_char_enabled;
    case eExtended2:
        return key.extended2_char_enabled;
    default:
        return key.default_char_enabled;
    }
}

bool isExtended(eKeyboardState state)
{
    return state == eExtended1 || state == eExtended2;
}

int lastRowColumns(eKeyboardSpecialFunction function)
{
    switch (function) {
    case eDoneKey:
        return 4;
    case eDeleteKey:
    case eExendedModeKey:
        return 3;
    default:
        return kLetter;
    }
}

// Side by side from the left; what the grid has left over goes to the space key.
void placeLastRow(const KeyboardLayout &layout, int gridColumns, QList<KeyPlace> &places)
{
    const auto function = [&](qsizetype key) { return layout.keyMap[size_t(key)].buttonFuntion; };
    int spare = gridColumns;
    for (qsizetype key = places.size(); key < layout.g_num_keys; ++key)
        spare -= lastRowColumns(function(key));
    int column = 0;
    for (qsizetype key = places.size(); key < layout.g_num_keys; ++key) {
        int columns = lastRowColumns(function(key));
        if (function(key) == eSpaceKey && spare > 0)
            columns += spare;
        places.append({3, column, columns});
        column += columns;
    }
}

} // namespace

std::optional<KeyboardLayout> readKeyboardLayout(QIODevice *file, QString *error)
{
    QXmlStreamReader reader(file);
    KeyboardLayout layout;
    if (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("keyboard"))
            readKeyboard(reader, layout);
        else
            reader.raiseError(QStringLiteral("Not a keyboard file"));
    }
    if (!reader.hasError())
        return layout;
    if (error)
        *error = reader.errorString();
    return std::nullopt;
}

QChar characterOf(const s_keyMapping &key, eKeyboardState state)
{
    switch (state) {
    case eShifted:
    case eShiftLocked:
        return key.shift_char;
    case eExtended1:
        return key.extended1_char;
    case eExtended2:
        return key.extended2_char;
    default:
        return key.default_char;
    }
}

bool isOffered(const s_keyMapping &key, eKeyboardState state, bool masked)
{
    return !masked || characterOf(key, state).isNull() || isEnabled(key, state);
}

QString keyLabel(const KeyboardLayout &layout, int key, eKeyboardState state)
{
    const s_keyMapping &mapping = layout.keyMap[size_t(key)];
    if (!mapping.default_char.isNull())
        return characterOf(mapping, state);
    if (mapping.buttonFuntion == eShiftKey) {
        return state == eExtended1   ? QStringLiteral("1/2")
               : state == eExtended2 ? QStringLiteral("2/2")
                                     : QStringLiteral("SHT");
    }
    if (mapping.buttonFuntion != eExendedModeKey)
        return {};
    QString start;
    for (size_t i = 0; i < 3; ++i)
        start += characterOf(layout.keyMap[i], isExtended(state) ? eDefault : eExtended1);
    return start;
}

eKeyboardState stateAfter(eKeyboardState state, eKeyboardSpecialFunction pressed)
{
    switch (pressed) {
    case eShiftKey:
        if (isExtended(state))
            return state == eExtended1 ? eExtended2 : eExtended1;
        return state == eDefault ? eShifted : eDefault;
    case eExendedModeKey:
        return isExtended(state) ? eDefault : eExtended1;
    case eSpaceKey:
        return eDefault;
    case eDeleteKey:
    case eDoneKey:
        return state;
    default:
        return state == eShifted ? eDefault : state;
    }
}

bool mayBeTyped(const KeyboardLayout &layout, QChar character, bool masked)
{
    if (!character.isPrint() && !character.isSurrogate())
        return false;
    if (!masked || character == QLatin1Char(' '))
        return true;
    for (int i = 0; i < layout.g_num_keys; ++i) {
        const s_keyMapping &key = layout.keyMap[size_t(i)];
        for (const eKeyboardState page : {eDefault, eShifted, eExtended1, eExtended2}) {
            if (characterOf(key, page) == character)
                return isEnabled(key, page);
        }
    }
    return character.isLetterOrNumber();
}

QList<KeyPlace> keyPlaces(const KeyboardLayout &layout)
{
    QList<KeyPlace> places;
    int columns = 0; // of the widest row
    const auto place = [&](int row, int column, int width) {
        places.append({row, column, width});
        columns = std::max(columns, column + width);
    };
    for (int i = 0; i < layout.g_row_one_keys; ++i)
        place(0, i * kLetter, kLetter);
    const int indent = layout.g_row_two_keys < kFewestForFullRow ? 1 : 0;
    for (int i = 0; i < layout.g_row_two_keys; ++i)
        place(1, indent + i * kLetter, kLetter);
    const int first = layout.g_row_three_keys < kFewestForNarrowShift ? 3 : kLetter;
    place(2, 0, first);
    for (int i = 0; i < layout.g_row_three_keys; ++i)
        place(2, first + i * kLetter, kLetter);

    const int end = places.last().end();
    if (places.size() < layout.g_num_keys && columns - end >= kNarrowestDelete &&
        layout.keyMap[size_t(places.size())].buttonFuntion == eDeleteKey)
        place(2, end, columns - end);
    placeLastRow(layout, columns, places);
    return places;
}

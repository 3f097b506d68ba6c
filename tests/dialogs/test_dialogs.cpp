#include "dialogs/owner.h"
#include "finger.h"
#include "testunit.h"

#include "dialogs/damagecatelog.h"
#include "dialogs/keyboardlayout.h"
#include "dialogs/keyboardwidget.h"
#include "settings/damagecatelogfile.h"
#include "settings/params.h"

#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QListWidget>
#include <QTextEdit>

using namespace Qt::StringLiterals;

namespace {

const QString kEnglish = u":/keyboardwidget/keyboard_en.xml"_s;

// Keys of the English layout that type nothing.
constexpr int kShift = 19;
constexpr int kDelete = 27;
constexpr int kExtended = 28;
constexpr int kSpace = 30;
constexpr int kDone = 32;

KeyboardLayout layoutOf(const QString &resource)
{
    QFile file(resource);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return readKeyboardLayout(&file).value_or(KeyboardLayout());
}

// The dialog with a finger on it.
class Keyboard
{
public:
    explicit Keyboard(const QString &text, bool masked = false, const QString &resource = kEnglish)
        : dialog(text, resource, masked, &owner)
    {
        dialog.init(&owner);
        dialog.show();
    }

    QPushButton *key(int index) const { return dialog.findChild<QPushButton *>(u"key%1"_s.arg(index)); }
    void touch(std::initializer_list<int> keys) const
    {
        for (const int index : keys)
            QTest::mouseClick(key(index), Qt::LeftButton);
    }
    QTextEdit *field() const { return dialog.findChild<QTextEdit *>(u"textEdit"_s); }

    Owner owner;
    keyboardWidget dialog;
};

const UnitPath kCatalog = u"/home/root/tubix4_app/damagecatelog/damagecat_en.txt"_unit;

QStringList shown(const DamageCatelog &catalog)
{
    QStringList texts;
    const auto *list = catalog.findChild<QListWidget *>();
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

void touchEntry(const DamageCatelog &catalog, int row)
{
    auto *list = catalog.findChild<QListWidget *>();
    list->scrollToItem(list->item(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
    QTRY_COMPARE(list->currentRow(), row);
}

} // namespace

class TestDialogs : public HeardTest
{
    Q_OBJECT

private slots:
    void everyLayoutIsReadAndHasAPlaceForEveryKey()
    {
        const QStringList files = QDir(u":/keyboardwidget"_s).entryList();
        QCOMPARE(files.size(), int(eTheEnd));
        for (const QString &file : files) {
            const KeyboardLayout layout = layoutOf(u":/keyboardwidget/"_s + file);
            QVERIFY2(layout.g_num_keys > 0, qPrintable(file));
            const QList<KeyPlace> places = keyPlaces(layout);
            QCOMPARE(places.size(), qsizetype(layout.g_num_keys));
            QList<int> taken(4, 0); // each row goes on where the key before it ends, or further right
            int widest = 0;
            for (const KeyPlace &place : places) {
                QVERIFY2(place.column >= taken[place.row], qPrintable(file));
                taken[place.row] = place.end();
                widest = std::max(widest, place.end());
            }
            QCOMPARE(taken[3], widest); // the last row fills the screen
            QVERIFY(widest <= 24);
        }
        const QList<KeyPlace> english = keyPlaces(layoutOf(kEnglish));
        QCOMPARE(english[10].column, 1);      // nine keys stand half a key to the right
        QCOMPARE(english[kShift].columns, 3); // seven keys leave room for a wide shift key
    }

    void aBrokenLayoutIsRefused()
    {
        QFile file(kEnglish);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray english = file.readAll();
        for (const auto &[from, to, reason] : std::initializer_list<std::array<const char *, 3>>{
                 {"keyboard>", "piano>", "Not a keyboard"},
                 {"<num_keys>33", "<num_keys>34", "34 keys announced"},
                 {"<num_keys>33", "<num_keys>39", "Not a number"}, // more than a keyboard has
                 {"<num_keys>33", "<num_keys>32", "32 keys announced"},
                 {"<row_one_keys>10", "<row_one_keys>38", "The rows hold more"},
                 {"71|1", "71", "Not a character"},      // no flag
                 {"71|1", "1F600|1", "Not a character"}, // beyond one
                 {"</keyboard>", "", "end of document"}}) {
            QByteArray text = QByteArray(english).replace(from, to);
            QBuffer broken(&text);
            broken.open(QIODevice::ReadOnly);
            QString error;
            QVERIFY(!readKeyboardLayout(&broken, &error));
            QVERIFY2(error.contains(QLatin1String(reason)), qPrintable(error));
        }
    }

    void shiftHoldsForOneLetter()
    {
        const Keyboard keyboard{QString()};
        keyboard.touch({kShift});
        QCOMPARE(keyboard.key(0)->text(), u"Q"_s);
        QVERIFY(keyboard.key(kShift)->isChecked());
        keyboard.touch({0, 1, kShift, kSpace, 1, kShift, kShift, 1, kShift, kDelete, 0});
        QCOMPARE(keyboard.field()->toPlainText(), u"Qw wQ"_s); // delete types nothing: shift waits
        QVERIFY(!keyboard.key(kShift)->isChecked());
    }

    void extendedPagesGoRound()
    {
        const Keyboard keyboard{QString()};
        keyboard.touch({kShift, kExtended, 0});
        QCOMPARE(keyboard.key(kShift)->text(), u"1/2"_s);
        QCOMPARE(keyboard.key(kExtended)->text(), u"qwe"_s);
        QCOMPARE(keyboard.key(25)->text(), u"&&"_s); // shown as one
        keyboard.touch({25, kShift, 0, 5});
        QCOMPARE(keyboard.key(kShift)->text(), u"2/2"_s);
        keyboard.touch({kShift, 1, kExtended, 0});
        QCOMPARE(keyboard.key(kShift)->text(), u"SHT"_s);
        keyboard.touch({kExtended, kSpace, 0});
        QCOMPARE(keyboard.field()->toPlainText(), u"1&äü2q q"_s);
    }

    void anotherKeyboardTypesNoMore()
    {
        for (const auto &[masked, text] : {std::pair(true, u"ab Щé"_s), {false, u"a/b\\ |Щé*"_s}}) {
            Keyboard keyboard(QString(), masked);
            for (const QChar c : u"a/b\\ |"_s)
                QTest::sendKeyEvent(QTest::Click, keyboard.field(), Qt::Key_unknown, c, Qt::NoModifier);
            QGuiApplication::clipboard()->setText(u"Щ\n\té*"_s);
            QTest::keyClick(keyboard.field(), Qt::Key_V, Qt::ControlModifier);
            QCOMPARE(keyboard.field()->toPlainText(), text);
            QTest::keyClick(keyboard.field(), Qt::Key_Return);
            QCOMPARE(keyboard.dialog.result(), int(QDialog::Accepted));
            QCOMPARE(keyboard.dialog.returnableText, text);
        }
    }

    void aKeyboardIsLeft()
    {
        for (const auto &[text, button] : {std::pair(u"x y"_s, u"key32"_s),
                                           {QString(), u"key32"_s},
                                           {u"x"_s, u"btn_Cancel"_s},
                                           {u"x"_s, QString()}}) { // the card goes
            Keyboard keyboard(text);
            QTimer::singleShot(0, &keyboard.dialog, [&, name = button] {
                if (name.isEmpty())
                    emit keyboard.owner.SDCardRemoved();
                else
                    touchIn(&keyboard.dialog, name);
            });
            const bool accepted = button == u"key32"_s;
            QCOMPARE(keyboard.dialog.exec(), int(accepted ? QDialog::Accepted : QDialog::Rejected));
            QCOMPARE(keyboard.dialog.returnableText, accepted ? text : QString());
        }
    }

    void theServiceTextEndsTheApplication()
    {
        Keyboard keyboard(u"a quitquitquit b"_s);
        bool goesOn = false;
        QTimer::singleShot(0, &keyboard.dialog, [&] { keyboard.touch({kDone}); });
        QTimer::singleShot(20000, &keyboard.dialog, [&] {
            goesOn = true;
            QCoreApplication::exit();
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(!goesOn);
        QVERIFY(!keyboard.dialog.isVisible());
        QVERIFY(keyboard.dialog.returnableText.isEmpty());
    }

    void aMissingLayoutLeavesAKeyboard()
    {
        const Keyboard keyboard(QString(), false, u":/keyboardwidget/keyboard_.xml"_s);
        keyboard.touch({0});
        QCOMPARE(keyboard.field()->toPlainText(), u"q"_s);
    }

    void anEntryIsAddedAndCutOut()
    {
        struct Row
        {
            QByteArray before;
            QString entry;
            QByteArray after;
        };
        const TestUnit folder({kCatalog.parent()});
        for (const auto &[before, entry, after] : {Row{"", u"Crack"_s, "Crack\n"}, // into no file
                                                   {"Crack \n", u"  Wurzeln \t"_s, "Crack \nWurzeln\n"},
                                                   {"Crack", u"Вода"_s, "CrackВода\n"},
                                                   {"Stra\xdf\r\n", u"Röhre"_s, "Stra\xdf\r\nRöhre\n"},
                                                   {"Crack\n", u"  "_s, "Crack\n\n"}}) {
            if (!before.isEmpty())
                folder.put(kCatalog, before);
            QVERIFY(damagecatelog::append(kCatalog, entry));
            QCOMPARE(folder.content(kCatalog), after);
        }
        for (const auto &[before, entry, after] :
             {Row{"a\nb\n", u"a"_s, "b\n"},
              {"a\nb", u"b"_s, "a\n"},
              {"a \nb\n", u"a "_s, "b\n"}, // its blank with it
              // Inside an earlier line: that one is cut, with the character after it.
              {"Pipe crack, é\ncrack\n", u"crack"_s, "Pipe  é\ncrack\n"},
              {"abé\nab\n", u"ab"_s, "\nab\n"}, // of two bytes
              {"\xef\xbb\xbf"
               "a\r\nb\r\n",
               u"a"_s,
               "\xef\xbb\xbf"
               "b\r\n"},
              // Not in UTF-8, or in part.
              {"\xfc?\nR\xf6hre\nRöhre\n", u"Röhre"_s, "\xfc?\nRöhre\n"},
              {"R\xf6hr\n\xe4?\n管\n", u"管"_s, "R\xf6hr\n\xe4?\n"}}) {
            folder.put(kCatalog, before);
            QVERIFY(!damagecatelog::removeFirst(kCatalog, u"A"_s));
            QVERIFY(damagecatelog::removeFirst(kCatalog, entry));
            QCOMPARE(folder.content(kCatalog), after);
        }
    }

    void theUserWritesTheCatalog()
    {
        const TestUnit folder({kCatalog.parent()});
        params::resetForTests();
        DamageCatelog catalog(nullptr);
        catalog.init();
        catalog.show();
        auto *erase = catalog.findChild<QPushButton *>(u"btn_DamageCatelog_DeleteItem"_s);
        for (const QStringList &keys : {QStringList{u"key0"_s, u"key32"_s}, // q, done: the file is made
                                        {u"key1"_s, u"btn_Cancel"_s},
                                        {u"key32"_s},
                                        {u"key1"_s, u"key2"_s, u"key32"_s}}) {
            whenOpen<keyboardWidget>([keys](keyboardWidget *keyboard) {
                for (const QString &key : keys)
                    touchIn(keyboard, key);
            });
            touchIn(&catalog, u"btn_DamageCatelog_AddItem"_s);
        }
        QCOMPARE(shown(catalog), QStringList({u"q"_s, u"we"_s}));
        QCOMPARE(folder.content(kCatalog), QByteArray("q\n\nwe\n"));
        QVERIFY(!erase->isEnabled());
        for (const QString &answer : {u"btn_Cancel"_s, u"btn_Confirm"_s}) {
            touchEntry(catalog, 0);
            QVERIFY(erase->isEnabled());
            whenOpen([answer](QDialog *box) { touchIn(box, answer); });
            touchIn(&catalog, u"btn_DamageCatelog_DeleteItem"_s);
            QVERIFY(!erase->isEnabled());
        }
        QCOMPARE(folder.content(kCatalog), QByteArray("\nwe\n"));
        QCOMPARE(shown(catalog), QStringList({u"we"_s}));
    }

    void aCatalogThatGoesWithTheCardTakesItsDialogsAlong()
    {
        const TestUnit folder({kCatalog.parent()});
        params::resetForTests();
        folder.put(kCatalog, "a\nb\n");
        for (const QString &button : {u"btn_DamageCatelog_AddItem"_s, u"btn_DamageCatelog_DeleteItem"_s}) {
            Owner owner;
            DamageCatelog catalog(&owner);
            catalog.init();
            whenOpen<DamageCatelog>([&](DamageCatelog *open) {
                touchEntry(*open, 0);
                QTimer::singleShot(0, &owner, &Owner::SDCardRemoved);
                touchIn(open, button);
            });
            catalog.exec();
            QVERIFY(!QApplication::activeModalWidget());
            QVERIFY(!catalog.returnValue);
            QCOMPARE(folder.content(kCatalog), QByteArray("a\nb\n"));
        }
    }
};

QTEST_MAIN(TestDialogs)
#include "test_dialogs.moc"

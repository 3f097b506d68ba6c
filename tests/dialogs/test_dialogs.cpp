#include "testunit.h"

#include "dialogs/damagecatelog.h"
#include "dialogs/keyboardlayout.h"
#include "dialogs/keyboardwidget.h"
#include "settings/damagecatelogfile.h"
#include "settings/params.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

const QString kEnglish = u":/keyboardwidget/keyboard_en.xml"_s;
const QString kJapanese = u":/keyboardwidget/keyboard_jp.xml"_s;

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

// A window that loses its card.
class Owner : public QWidget
{
    Q_OBJECT

signals:
    void SDCardRemoved();
};

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

const QString kCatalog = u"/home/root/tubix4_app/damagecatelog/damagecat_en.txt"_s;

// Acts on the dialog that opens next, as soon as it is open.
template <typename Dialog, typename Act> void whenOpen(Act act)
{
    auto *poll = new QTimer(qApp);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, act] {
        if (auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget())) {
            delete poll;
            act(dialog);
        }
    });
    poll->start(1);
}

void touch(const QWidget *dialog, const char *button)
{
    QTest::mouseClick(dialog->findChild<QPushButton *>(QString::fromLatin1(button)), Qt::LeftButton);
}

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

class TestDialogs : public QObject
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
        QCOMPARE(english[kDelete].row, 2);
        const QList<KeyPlace> japanese = keyPlaces(layoutOf(kJapanese));
        QCOMPARE(japanese[11].column, 0);
        QCOMPARE(japanese[21].columns, 2);
        QCOMPARE(japanese[32].row, 3); // its third row has no room for delete
    }

    void aBrokenLayoutIsRefused_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("reason");
        QTest::newRow("another root")
            << QByteArray("keyboard>") << QByteArray("piano>") << u"Not a keyboard"_s;
        QTest::newRow("a key is missing")
            << QByteArray("<num_keys>33") << QByteArray("<num_keys>34") << u"34 keys announced"_s;
        QTest::newRow("more keys than a keyboard has")
            << QByteArray("<num_keys>33") << QByteArray("<num_keys>39") << u"Not a number"_s;
        QTest::newRow("more keys than announced")
            << QByteArray("<num_keys>33") << QByteArray("<num_keys>32") << u"32 keys announced"_s;
        QTest::newRow("rows too long")
            << QByteArray("<row_one_keys>10") << QByteArray("<row_one_keys>38") << u"The rows hold more"_s;
        QTest::newRow("no character") << QByteArray("71|1") << QByteArray("q|1") << u"Not a character"_s;
        QTest::newRow("no flag") << QByteArray("71|1") << QByteArray("71") << u"Not a character"_s;
        QTest::newRow("beyond one character")
            << QByteArray("71|1") << QByteArray("1F600|1") << u"Not a character"_s;
        QTest::newRow("cut off") << QByteArray("</keyboard>") << QByteArray() << u"end of document"_s;
    }
    void aBrokenLayoutIsRefused()
    {
        QFETCH(const QByteArray, from);
        QFETCH(const QByteArray, to);
        QFETCH(const QString, reason);
        QFile english(kEnglish);
        QVERIFY(english.open(QIODevice::ReadOnly));
        QByteArray text = english.readAll();
        QVERIFY(text.contains(from));
        text.replace(from, to);
        QBuffer file(&text);
        file.open(QIODevice::ReadOnly);
        QString error;
        QVERIFY(!readKeyboardLayout(&file, &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }

    void aLayoutNeverFillsMoreThanTheKeysThereAre()
    {
        QByteArray text("<keyboard><layout><num_keys>38</num_keys><new><a/></new></layout>");
        for (int i = 0; i < 500; ++i)
            text += "<key><default>71|1</default></key>";
        text += "</keyboard>";
        QBuffer file(&text);
        file.open(QIODevice::ReadOnly);
        QString error;
        QVERIFY(!readKeyboardLayout(&file, &error));
        QVERIFY2(error.contains(u"Too many keys"_s), qPrintable(error));
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
        QCOMPARE(keyboard.key(kShift)->text(), u"SHT"_s);
        QCOMPARE(keyboard.key(kExtended)->text(), u"123"_s);
        keyboard.touch({kShift, kExtended, 0});
        QCOMPARE(keyboard.key(kShift)->text(), u"1/2"_s);
        QCOMPARE(keyboard.key(kExtended)->text(), u"qwe"_s);
        QCOMPARE(keyboard.key(25)->text(), u"&&"_s); // shown as one
        keyboard.touch({25, kShift, 0, 5});
        QCOMPARE(keyboard.key(kShift)->text(), u"2/2"_s);
        keyboard.touch({kShift, 1});
        QCOMPARE(keyboard.key(kShift)->text(), u"1/2"_s);
        keyboard.touch({kExtended, 0});
        QCOMPARE(keyboard.key(kShift)->text(), u"SHT"_s);
        keyboard.touch({kExtended, kSpace, 0});
        QCOMPARE(keyboard.field()->toPlainText(), u"1&äü2q q"_s);
    }

    void theMaskHidesAKeyAndKeepsItsPlace()
    {
        Keyboard keyboard(u"x"_s, true);
        const QRect beside = keyboard.key(15)->geometry();
        keyboard.touch({kExtended});
        QVERIFY(!keyboard.key(14)->isVisible()); // the slash
        QCOMPARE(keyboard.key(15)->geometry(), beside);
        keyboard.touch({kExtended});
        QVERIFY(keyboard.key(14)->isVisible());
        const Keyboard open{QString()};
        open.touch({kExtended, 14});
        QCOMPARE(open.field()->toPlainText(), u"/"_s);
    }

    void anotherKeyboardTypesNoMore_data()
    {
        QTest::addColumn<bool>("masked");
        QTest::addColumn<QString>("text");
        QTest::newRow("name") << true << u"ab Щé"_s;
        QTest::newRow("note") << false << u"a/b\\ |Щé*"_s;
    }
    void anotherKeyboardTypesNoMore()
    {
        QFETCH(const bool, masked);
        Keyboard keyboard(QString(), masked);
        for (const QChar c : u"a/b\\ |"_s)
            QTest::sendKeyEvent(QTest::Click, keyboard.field(), Qt::Key_unknown, c, Qt::NoModifier);
        QGuiApplication::clipboard()->setText(u"Щ\n\té*"_s);
        QTest::keyClick(keyboard.field(), Qt::Key_V, Qt::ControlModifier);
        QTEST(keyboard.field()->toPlainText(), "text");
        QTest::keyClick(keyboard.field(), Qt::Key_Return);
        QCOMPARE(keyboard.dialog.result(), int(QDialog::Accepted));
        QTEST(keyboard.dialog.returnableText, "text");
    }

    void aTouchInTheTextMovesTheCursor()
    {
        const Keyboard keyboard(u"abcdefghij"_s);
        keyboard.touch({kDelete});
        QTextCursor third = keyboard.field()->textCursor();
        third.setPosition(3);
        const QPoint place = keyboard.field()->cursorRect(third).center();
        QTest::mouseClick(keyboard.field()->viewport(), Qt::LeftButton, {}, place);
        keyboard.touch({kDelete, kSpace});
        QCOMPARE(keyboard.field()->toPlainText(), u"ab defghi"_s);
    }

    void aDialogIsLeft_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("result");
        QTest::newRow("done") << u"x y"_s << u"key32"_s << int(QDialog::Accepted);
        QTest::newRow("done, empty") << QString() << u"key32"_s << int(QDialog::Accepted);
        QTest::newRow("cancel") << u"x"_s << u"btn_Cancel"_s << int(QDialog::Rejected);
        QTest::newRow("no card") << u"x"_s << QString() << int(QDialog::Rejected);
    }
    void aDialogIsLeft()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, button);
        QFETCH(const int, result);
        Keyboard keyboard(text);
        QTimer::singleShot(0, &keyboard.dialog, [&] {
            if (button.isEmpty())
                emit keyboard.owner.SDCardRemoved();
            else
                QTest::mouseClick(keyboard.dialog.findChild<QPushButton *>(button), Qt::LeftButton);
        });
        QCOMPARE(keyboard.dialog.exec(), result);
        QCOMPARE(keyboard.dialog.returnableText, result == QDialog::Accepted ? text : QString());
    }

    void theServiceTextEndsTheApplication()
    {
        Keyboard keyboard(u"a quitquitquit b"_s);
        bool goesOn = false;
        QTimer::singleShot(0, &keyboard.dialog, [&] { keyboard.touch({kDone}); });
        QTimer::singleShot(5000, &keyboard.dialog, [&] {
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

    void anEntryIsAdded_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("trimmed") << QByteArray("Crack \n") << u"  Wurzeln \t"_s
                                 << QByteArray("Crack \nWurzeln\n");
        QTest::newRow("after a line without end")
            << QByteArray("Crack") << u"Вода"_s << QByteArray("CrackВода\n");
        QTest::newRow("empty") << QByteArray("Crack\n") << u"  "_s << QByteArray("Crack\n\n");
        QTest::newRow("not UTF-8") << QByteArray("Stra\xdf"
                                                 "e\r\n")
                                   << u"Röhre"_s
                                   << QByteArray("Stra\xdf"
                                                 "e\r\nR\xc3\xb6hre\n");
        QTest::newRow("into no file") << QByteArray() << u"Crack"_s << QByteArray("Crack\n");
    }
    void anEntryIsAdded()
    {
        QFETCH(const QByteArray, before);
        QFETCH(const QString, entry);
        const TestUnit folder({QFileInfo(kCatalog).path()});
        if (!before.isEmpty())
            folder.put(kCatalog, before);
        QVERIFY(damagecatelog::append(kCatalog, entry));
        QTEST(folder.content(kCatalog), "after");
    }

    void anEntryIsCutOut_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("first") << QByteArray("a\nb\n") << u"a"_s << QByteArray("b\n");
        QTest::newRow("last, without line end") << QByteArray("a\nb") << u"b"_s << QByteArray("a\n");
        QTest::newRow("its blank with it") << QByteArray("a \nb\n") << u"a "_s << QByteArray("b\n");
        QTest::newRow("inside an earlier line") // that one is cut, with the character after it
            << QByteArray("Pipe crack, é\ncrack\n") << u"crack"_s << QByteArray("Pipe  é\ncrack\n");
        QTest::newRow("a letter of two bytes follows")
            << QByteArray("abé\nab\n") << u"ab"_s << QByteArray("\nab\n");
        QTest::newRow("from a desk computer") << QByteArray("\xef\xbb\xbf"
                                                            "a\r\nb\r\n")
                                              << u"a"_s
                                              << QByteArray("\xef\xbb\xbf"
                                                            "b\r\n");
        QTest::newRow("not UTF-8") << QByteArray("\xfc?\nR\xf6hre\nR\xc3\xb6hre\n") << u"Röhre"_s
                                   << QByteArray("\xfc?\nR\xc3\xb6hre\n");
        QTest::newRow("UTF-8 beside it")
            << QByteArray("R\xf6hr\n\xe4?\n管\n") << u"管"_s << QByteArray("R\xf6hr\n\xe4?\n");
    }
    void anEntryIsCutOut()
    {
        QFETCH(const QByteArray, before);
        QFETCH(const QString, entry);
        const TestUnit folder({QFileInfo(kCatalog).path()});
        folder.put(kCatalog, before);
        QVERIFY(!damagecatelog::removeFirst(kCatalog, u"A"_s));
        QVERIFY(damagecatelog::removeFirst(kCatalog, entry));
        QTEST(folder.content(kCatalog), "after");
    }

    void whatCannotBeReadIsNeverReplaced()
    {
        const TestUnit folder({kCatalog}); // a folder of that name cannot be opened
        QString error;
        QVERIFY(!damagecatelog::entries(kCatalog, &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!damagecatelog::append(kCatalog, u"Crack"_s));
        QVERIFY(!damagecatelog::removeFirst(kCatalog, u"Crack"_s));
        QVERIFY(!restoreFactoryCatelog(eEnglish));
        QVERIFY(QFileInfo(unit::path(kCatalog)).isDir());
        const TestUnit nothing((QStringList()));
        QVERIFY(!damagecatelog::append(kCatalog, u"Crack"_s));
    }

    void theFactoryCatalogComesBack()
    {
        const TestUnit folder({QFileInfo(kCatalog).path()});
        for (int language = 0; language < eTheEnd; ++language) {
            const QString abbreviation = languageAbbreviation(eLanguages(language));
            const QString file = damageCatelogFile(abbreviation);
            const bool resets = language < eTurkish;
            folder.put(file, "mine\n");
            QCOMPARE(restoreFactoryCatelog(language), resets);
            QCOMPARE(damagecatelog::resetName(language).isEmpty(), !resets);
            QCOMPARE(damagecatelog::entries(file)->size(), resets ? 15 : 1);
        }
        QVERIFY(!restoreFactoryCatelog(eTheEnd));
        QCOMPARE(damagecatelog::entries(kCatalog)->at(4), u"Leaking pipe or collar connector "_s);
        QCOMPARE(damagecatelog::resetName(eJapanese), u"Japanese"_s);
    }

    void aCatalogAnswers_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<bool>("act");
        QTest::addColumn<QString>("text");
        QTest::newRow("confirm") << 1 << QByteArray("Confirm") << true << u"b "_s;
        QTest::newRow("confirm nothing") << -1 << QByteArray("Confirm") << false << QString();
        QTest::newRow("cancel") << 1 << QByteArray("Cancel") << false << QString();
        QTest::newRow("take it off") << 1 << QByteArray("RemovedDamageNotation") << true << QString();
    }
    void aCatalogAnswers()
    {
        QFETCH(const int, row);
        QFETCH(const QByteArray, button);
        const TestUnit folder({QFileInfo(kCatalog).path()});
        params::resetForTests();
        folder.put(kCatalog, "a\n\nb \n");
        DamageCatelog catalog(nullptr);
        catalog.init();
        whenOpen<DamageCatelog>([&](DamageCatelog *open) {
            if (row >= 0)
                touchEntry(*open, row);
            touch(open, "btn_DamageCatelog_" + button);
        });
        catalog.exec();
        QTEST(catalog.returnValue, "act");
        QTEST(catalog.returnDamageDescription, "text");
    }

    void theUserWritesTheCatalog()
    {
        const TestUnit folder({QFileInfo(kCatalog).path()});
        params::resetForTests();
        DamageCatelog catalog(nullptr);
        catalog.init();
        catalog.show();
        auto *erase = catalog.findChild<QPushButton *>(u"btn_DamageCatelog_DeleteItem"_s);
        const auto add = [&](std::initializer_list<const char *> keys) {
            whenOpen<keyboardWidget>([keys](keyboardWidget *keyboard) {
                for (const char *key : keys)
                    touch(keyboard, key);
            });
            touch(&catalog, "btn_DamageCatelog_AddItem");
        };
        add({"key0", "key32"}); // q, done: the file is made
        add({"key1", "btn_Cancel"});
        add({"key32"});
        add({"key1", "key2", "key32"});
        QCOMPARE(shown(catalog), QStringList({u"q"_s, u"we"_s}));
        QCOMPARE(folder.content(kCatalog), QByteArray("q\n\nwe\n"));
        QVERIFY(!erase->isEnabled());
        for (const char *answer : {"btn_Cancel", "btn_Confirm"}) {
            touchEntry(catalog, 0);
            QVERIFY(erase->isEnabled());
            whenOpen<QDialog>([answer](QDialog *box) { touch(box, answer); });
            touch(&catalog, "btn_DamageCatelog_DeleteItem");
            QVERIFY(!erase->isEnabled());
        }
        QCOMPARE(folder.content(kCatalog), QByteArray("\nwe\n"));
        QCOMPARE(shown(catalog), QStringList({u"we"_s}));
    }

    void anAbandonedCatalogTakesItsDialogsAlong_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("keyboard") << QByteArray("AddItem");
        QTest::newRow("question") << QByteArray("DeleteItem");
    }
    void anAbandonedCatalogTakesItsDialogsAlong()
    {
        QFETCH(const QByteArray, button);
        const TestUnit folder({QFileInfo(kCatalog).path()});
        params::resetForTests();
        folder.put(kCatalog, "a\nb\n");
        DamageCatelog catalog(nullptr);
        catalog.init();
        whenOpen<DamageCatelog>([&](DamageCatelog *open) {
            touchEntry(*open, 0);
            QTimer::singleShot(0, open, &DamageCatelog::abandon);
            touch(open, "btn_DamageCatelog_" + button);
        });
        catalog.exec();
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(!catalog.returnValue);
        QCOMPARE(folder.content(kCatalog), QByteArray("a\nb\n"));
    }
};

QTEST_MAIN(TestDialogs)
#include "test_dialogs.moc"

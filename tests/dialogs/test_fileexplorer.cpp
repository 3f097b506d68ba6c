#include "testunit.h"

#include "dialogs/fileexplorer.h"
#include "storage/dcim.h"
#include "storage/inspectionfolder.h"

#include <QApplication>
#include <QDirIterator>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QTreeView>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

QString below(const QString &name)
{
    return kBaseFolder + u'/' + name;
}

bool exists(const QString &path)
{
    return QFileInfo::exists(unit::path(path));
}

} // namespace

// A window that loses its card.
class Owner : public QWidget
{
    Q_OBJECT

signals:
    void SDCardRemoved();
};

// The dialog with a finger on it, on a card with two inspections; "Main Street" is the current one.
class Explorer
{
public:
    explicit Explorer(const QStringList &more = {})
    {
        for (const QString &name : QStringList{u"Other"_s, u"Main Street"_s} + more)
            CreateDCIMStructure(below(name));
        CreateDCIMStructure(below(u"Main Street"_s));
        open();
    }

    void open()
    {
        dialog = std::make_unique<FileExplorer>(&owner);
        dialog->init(&owner);
        dialog->setData(g_SavedFSInfo.currRootDirectory);
        dialog->show();
    }

    // What lies on the screen, from top to bottom.
    QStringList rows() const
    {
        QStringList names;
        for (QModelIndex row = tree()->indexAt(QPoint(0, 0)); row.isValid(); row = tree()->indexBelow(row))
            names << row.data().toString();
        return names;
    }

    void touchFolder(const QString &name)
    {
        QTRY_VERIFY2(rows().contains(name), qPrintable(name));
        QModelIndex row = tree()->indexAt(QPoint(0, 0));
        while (row.data().toString() != name)
            row = tree()->indexBelow(row);
        tree()->scrollTo(row);
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, tree()->visualRect(row).center());
    }

    QPushButton *button(const QString &name) const
    {
        return dialog->findChild<QPushButton *>(u"btn_"_s + name);
    }
    void touch(const QString &name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    // Touches a button whose question `answer` then answers.
    void touch(const QString &name, const std::function<void(QWidget *)> &answer)
    {
        QTimer waiting;
        QObject::connect(&waiting, &QTimer::timeout, dialog.get(), [&] {
            if (QWidget *question = QApplication::activeModalWidget(); question && question != dialog.get()) {
                waiting.stop();
                answer(question);
            }
        });
        waiting.start(10);
        touch(name);
        QVERIFY(!waiting.isActive());
    }

    void touchAndType(const QString &name, const QString &text)
    {
        touch(name, [&](QWidget *keyboard) {
            auto *field = keyboard->findChild<QTextEdit *>(u"textEdit"_s);
            field->setPlainText(text);
            QTest::keyClick(field, Qt::Key_Return);
        });
    }

    TestUnit folder{{kDcimFolder}};
    Owner owner;
    std::unique_ptr<FileExplorer> dialog;

private:
    QTreeView *tree() const { return dialog->findChild<QTreeView *>(u"tView_Folders"_s); }
};

namespace {

void confirmQuestion(QWidget *question)
{
    QTest::mouseClick(question->findChild<QPushButton *>(u"btn_Confirm"_s), Qt::LeftButton);
}

} // namespace

class TestFileExplorer : public QObject
{
    Q_OBJECT

private slots:
    void onlyInspectionFoldersAreShownAndOnlyTheyChange()
    {
        Explorer explorer({u"Кирова 5"_s, u"東京 下水道"_s});
        QDir().mkpath(unit::path(kDcimFolder + u"/101OTHER"_s));
        QTRY_COMPARE(explorer.rows(), (QStringList{u"100TUBIX"_s, u"Main Street"_s, u"Other"_s, u"Кирова 5"_s,
                                                   u"東京 下水道"_s, u"101OTHER"_s}));
        for (const auto &[name, changes] :
             {std::pair(u"100TUBIX"_s, false), {u"東京 下水道"_s, true}, {u"101OTHER"_s, false}}) {
            explorer.touchFolder(name);
            QCOMPARE(explorer.button(u"RenameFolder"_s)->isEnabled(), changes);
            QCOMPARE(explorer.button(u"DeleteFolder"_s)->isEnabled(), changes);
        }
    }

    void theChosenFolderIsAnInspection_data()
    {
        QTest::addColumn<QString>("touched");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("chosen"); // empty: the folder of the day
        QTest::newRow("an inspection") << u"Other"_s << u"Confirm"_s << u"Other"_s;
        QTest::newRow("the base folder") << u"100TUBIX"_s << u"Confirm"_s << QString();
        QTest::newRow("a folder beside it") << u"101OTHER"_s << u"Confirm"_s << QString();
        QTest::newRow("nothing touched") << QString() << u"Confirm"_s << u"Main Street"_s;
        QTest::newRow("cancelled") << u"Other"_s << u"Cancel"_s << u"Main Street"_s;
    }
    void theChosenFolderIsAnInspection()
    {
        QFETCH(const QString, touched);
        QFETCH(const QString, button);
        QFETCH(const QString, chosen);
        Explorer explorer;
        QDir().mkpath(unit::path(kDcimFolder + u"/101OTHER"_s));
        if (!touched.isEmpty())
            explorer.touchFolder(touched);
        explorer.touch(button);
        QVERIFY(!explorer.dialog->isVisible());
        QCOMPARE(explorer.dialog->returnableText, chosen.isEmpty() ? folderOfTheDay() : below(chosen));
        QVERIFY(exists(explorer.dialog->returnableText + u"/.html_assets"_s));
    }

    void aNewFolderIsAnInspectionAtOnce()
    {
        Explorer explorer;
        explorer.touchAndType(u"NewFolder"_s, u" Bach Str. 5. "_s); // its ends are lost on a computer
        QVERIFY(exists(below(u"Bach Str. 5/Bach Str. 5.html"_s)));
        QTRY_VERIFY(explorer.rows().contains(u"Bach Str. 5"_s));
        // The new one is selected: a second one goes into it, and a cancel comes back to where it started.
        explorer.touchAndType(u"NewFolder"_s, u"House 3"_s);
        QVERIFY(exists(below(u"Bach Str. 5/House 3/.thumbs"_s)));
        explorer.touch(u"Cancel"_s);
        QCOMPARE(explorer.dialog->returnableText, below(u"Main Street"_s));
    }

    void aRenamedFolderKeepsItsLogs()
    {
        Explorer explorer;
        explorer.folder.put(below(u"Main Street/Main Street.txt"_s), "001.00  a line\n");
        const QByteArray page = explorer.folder.content(below(u"Main Street/Main Street.html"_s));
        explorer.touchFolder(u"Main Street"_s);
        explorer.touch(u"RenameFolder"_s, [](QWidget *keyboard) {
            auto *field = keyboard->findChild<QTextEdit *>(u"textEdit"_s);
            QCOMPARE(field->toPlainText(), u"Main Street"_s);
            field->setPlainText(u"50% München %1"_s);
            QTest::keyClick(field, Qt::Key_Return);
        });
        const QString renamed = below(u"50% München %1"_s);
        QVERIFY(!exists(below(u"Main Street"_s)));
        QCOMPARE(explorer.folder.content(renamed + u"/50% München %1.html"_s), page);
        QCOMPARE(explorer.folder.content(renamed + u"/50% München %1.txt"_s), QByteArray("001.00  a line\n"));
        QVERIFY(!explorer.button(u"DeleteFolder"_s)->isEnabled());
        explorer.touch(u"Cancel"_s); // the current folder went along
        QCOMPARE(explorer.dialog->returnableText, renamed);
        QCOMPARE(g_SavedFSInfo.currRootDirectory, renamed);
    }

    void aNameThatCannotBeDoesNothing()
    {
        Explorer explorer;
        const auto tree = [] {
            QStringList entries;
            QDirIterator all(unit::path(kDcimFolder), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
            while (all.hasNext())
                entries << all.next();
            entries.sort();
            return entries;
        };
        const QStringList before = tree();
        for (const QString &name :
             {u"../Escaped"_s, u"a/b"_s, u".."_s, u"."_s, u"Nul"_s, u".hidden"_s, u"Main Street."_s, u"a:b"_s,
              QString(256, u'x'), QString(121, QChar(0x416)), u" "_s}) {
            explorer.touchFolder(u"100TUBIX"_s);
            explorer.touchAndType(u"NewFolder"_s, name);
            explorer.touchFolder(u"Other"_s);
            explorer.touchAndType(u"RenameFolder"_s, name);
            QVERIFY2(tree() == before, qPrintable(name));
        }
        QCOMPARE(g_SavedFSInfo.currRootDirectory, below(u"Main Street"_s));
    }

    void aFolderWhoseLogCannotMoveKeepsAllItsNames()
    {
        Explorer explorer;
        explorer.folder.put(below(u"Other/Other.txt"_s), "ours\n");
        explorer.folder.put(below(u"Other/New.txt"_s), "somebody's\n");
        QVERIFY(renameInspectionFolder(below(u"Other"_s), u"New"_s).isEmpty());
        QVERIFY(exists(below(u"Other/Other.html"_s)));
        QCOMPARE(explorer.folder.content(below(u"Other/Other.txt"_s)), QByteArray("ours\n"));
        QCOMPARE(explorer.folder.content(below(u"Other/New.txt"_s)), QByteArray("somebody's\n"));
    }

    void theDeletedCurrentFolderGivesWayToThatOfTheDay()
    {
        Explorer explorer;
        explorer.touchFolder(u"Main Street"_s);
        explorer.touch(u"DeleteFolder"_s, [](QWidget *question) {
            QTest::mouseClick(question->findChild<QPushButton *>(u"btn_Cancel"_s), Qt::LeftButton);
        });
        QVERIFY(exists(below(u"Main Street"_s)));
        explorer.touchFolder(u"Main Street"_s);
        explorer.touch(u"DeleteFolder"_s, confirmQuestion);
        QVERIFY(!exists(below(u"Main Street"_s)));
        QTRY_VERIFY(!explorer.rows().contains(u"Main Street"_s));
        explorer.touch(u"Confirm"_s); // not the neighbour in the list
        QCOMPARE(explorer.dialog->returnableText, folderOfTheDay());
        QVERIFY(exists(folderOfTheDay()));
    }

    void aPulledCardClosesDialogAndQuestion_data()
    {
        QTest::addColumn<QString>("button"); // whose question is open
        QTest::newRow("none") << QString();
        QTest::newRow("keyboard") << u"RenameFolder"_s;
        QTest::newRow("trash can") << u"DeleteFolder"_s;
    }
    void aPulledCardClosesDialogAndQuestion()
    {
        QFETCH(const QString, button);
        Explorer explorer;
        explorer.touchFolder(u"Other"_s);
        if (button.isEmpty())
            emit explorer.owner.SDCardRemoved();
        else
            explorer.touch(button, [&](QWidget *) { emit explorer.owner.SDCardRemoved(); });
        QVERIFY(!explorer.dialog->isVisible());
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(explorer.dialog->returnableText, QString());
        QVERIFY(exists(below(u"Other/Other.html"_s)));
    }
};

QTEST_MAIN(TestFileExplorer)
#include "test_fileexplorer.moc"

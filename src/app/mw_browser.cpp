// The browser: pages of twelve thumbnails, and one selected file at full size.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "core/pages.h"
#include "dialogs/editorscene.h"
#include "film/firstframe.h"
#include "film/picturefile.h"
#include "film/thumbnail.h"
#include "media/gst_audioplayback.h"
#include "media/gst_videoinput.h"
#include "media/gst_videoplayback.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "storage/capturefiles.h"
#include "storage/eventlog.h"
#include "storage/listing.h"
#include "storage/position.h"
#include "storage/sdcard.h"

#include <QTimer>

namespace {

constexpr QRect kFilmPlace(80, 24, 720, 576);
constexpr QRect kPicturePlace(80, 0, 720, 600); // with the brand band
constexpr QSize kFinestPicture(1440, 1200);     // twice what the screen shows

HostPath hostPathInFolder(const QString &fileName)
{
    return unit::path(inCurrentFolder(fileName));
}

// The small picture of a file with its mark; a file that cannot be read is shown as such.
QImage thumbnailOf(const sSnakeFileInfo &file)
{
    const HostPath path = hostPathInFolder(file.fileName);
    QImage picture =
        file.isVideo ? filmThumbnail(path, hostPathInFolder(capturefiles::storedThumbnailOf(file.fileName)))
                     : readSmallPicture(path, kThumbnailWidth);
    if (picture.isNull()) {
        picture = QImage(graphic("popup_image_error.png"));
        if (file.isVideo)
            return picture;
        picture = picture.scaledToWidth(kThumbnailWidth);
    }
    static const QImage filmMark(graphic("file_avi.png")), noteMark(graphic("file_wav.png"));
    if (file.isVideo)
        return withMark(picture, filmMark);
    return file.annotated ? withMark(picture, noteMark) : picture;
}

void setUp(QListWidget &list)
{
    list.setViewMode(QListView::IconMode);
    list.setMovement(QListView::Static);
    list.setResizeMode(QListView::Fixed);
    list.setFrameShape(QFrame::NoFrame);
    list.setFrameShadow(QFrame::Plain);
    list.setUniformItemSizes(true);
    list.setAutoScroll(false);
    list.setGridSize({144, 112});
    list.setGeometry(70, 120, 580, 336);
    list.setIconSize({128, 96});
    QFont names = list.font();
    names.setPixelSize(11); // what a row has left below its icon
    list.setFont(names);
}

} // namespace

void MainWindow::enterEnterPlaybackThumbnails()
{
    emit BusyIndicator(true);
    gst_EndVideoInputPipeline();
    imageTimer->stop();
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    g_SavedFSInfo.currThumbnailPage = 1;
    g_SavedFSInfo.NumberOfThumbnailPages = qint16(pageCount(g_SavedFSInfo.nFilescurrRootDirectory));
    g_selectedItemFileIndex = 0;
    if (g_SavedFSInfo.nFilescurrRootDirectory == 0) {
        ChangeMainState(eStatePlaybackNothingSaved);
        return;
    }
    setUp(*ui->listW_ThumbnailViewer);
    ChangeMainState(eStatePlaybackThumbnailsSelectable);
}

void MainWindow::enterPlaybackThumbnailsPreviousPage()
{
    turnPage(-1);
}

void MainWindow::enterPlaybackThumbnailsNextPage()
{
    turnPage(+1);
}

// Beyond the first and last page nothing turns and nothing is logged; the page is drawn again.
void MainWindow::turnPage(int step)
{
    emit BusyIndicator(true);
    const int wanted =
        stepWithin(g_SavedFSInfo.currThumbnailPage, step, 1, g_SavedFSInfo.NumberOfThumbnailPages);
    if (wanted != g_SavedFSInfo.currThumbnailPage) {
        UpdateEventLog(step > 0 ? eEventNextThumbnailPage : eEventPrevThumbnailPage,
                       step > 0 ? QStringLiteral("Next thumbnail page button clicked")
                                : QStringLiteral("Previous thumbnail page button clicked"));
        g_SavedFSInfo.currThumbnailPage = qint16(wanted);
    }
    ChangeMainState(eStatePlaybackThumbnailsSelectable);
}

void MainWindow::enterPlaybackThumbnailsSelectable()
{
    genericDelayTimer->stop();
    imageTimer->stop();
    DisplayThumbnails();
    emit BusyIndicator(false);
}

void MainWindow::DisplayThumbnails()
{
    QListWidget &list = *ui->listW_ThumbnailViewer;
    while (list.count() > 0)
        list.takeItem(0); // the items stay ours
    const auto [first, end] =
        filesOnPage(g_SavedFSInfo.currThumbnailPage, g_SavedFSInfo.nFilescurrRootDirectory);
    for (int index = first; index < end; ++index) {
        const sSnakeFileInfo &file = g_FileListing[size_t(index)];
        QListWidgetItem &item = g_ListItemArray[size_t(index - first)];
        item.setIcon(QIcon(QPixmap::fromImage(fitted(thumbnailOf(file), list.iconSize()))));
        item.setData(Qt::UserRole, index);
        item.setText(file.fileName);
        ui->lbl_CurrentFilenameandPath->setText(QStringLiteral("%1/%2")
                                                    .arg(g_SavedFSInfo.currThumbnailPage)
                                                    .arg(g_SavedFSInfo.NumberOfThumbnailPages));
        list.addItem(&item);
    }
    list.setCurrentItem(nullptr);
}

bool MainWindow::getThumbnailImage(const UnitPath &path)
{
    const QImage picture = firstFrameOfFilm(unit::path(path), kThumbnailWidth);
    if (picture.isNull())
        return false;
    tmpQimage = picture;
    return true;
}

void MainWindow::enterPlaybackPreviousSelectedThumbnail()
{
    selectNeighbour(-1, eEventPrevThumbnail, "Previous thumbnail button clicked");
}

void MainWindow::enterPlaybackNextSelectedThumbnail()
{
    selectNeighbour(+1, eEventNextThumbnail, "Next thumbnail button clicked");
}

void MainWindow::selectNeighbour(int step, eEventLogOperation operation, const char *text)
{
    const int wanted = stepWithin(g_selectedItemFileIndex, step, 0, g_SavedFSInfo.nFilescurrRootDirectory);
    if (wanted == g_selectedItemFileIndex) {
        restoreMainState(g_prevMainState); // nothing happened: what played or waited goes on
        return;
    }
    g_selectedItemFileIndex = wanted;
    g_SavedFSInfo.currThumbnailPage = qint16(pageOf(wanted));
    UpdateEventLog(operation, QString::fromLatin1(text));
    displaySelectedThumbnail();
}

void MainWindow::displaySelectedThumbnail()
{
    if (g_selectedItemFileIndex >= g_SavedFSInfo.nFilescurrRootDirectory) {
        ChangeMainState(eStatePlaybackNothingSaved);
        return;
    }
    stopPlayback();
    ui->pb_PlaybackIndicator->setValue(0);
    ui->btn_menu_ThumbnailNext->setIcon(graphicIcon("btn_next_thumbnail.png")); // the form has the page's
    const sSnakeFileInfo &file = g_FileListing[size_t(g_selectedItemFileIndex)];
    g_SavedFSInfo.currSelectedFile = file.fileName;
    g_SavedFSInfo.currSelectedAudioFile = capturefiles::noteOf(file.fileName);
    ui->lbl_CurrentFilenameandPath->setText(QLatin1String("...") + shownPath(inCurrentFolder(file.fileName)));
    if (file.isVideo)
        displaySelectedFilm();
    else
        displaySelectedPicture();
}

void MainWindow::placePicture(const QRect &place)
{
    ui->labelInputVideo->setGeometry(place);
    ui->gv_MainView->setGeometry(place);
    mainScene->setSceneRect(QRect(QPoint(), place.size()));
}

void MainWindow::displaySelectedFilm()
{
    const QImage frame = firstFrameOfFilm(hostPathInFolder(g_SavedFSInfo.currSelectedFile));
    m_shown.fileIsReadable = !frame.isNull();
    // A film that cannot be read keeps the picture that the page has of it.
    tmpQimage = m_shown.fileIsReadable ? frame : thumbnailOf(g_FileListing[size_t(g_selectedItemFileIndex)]);
    placePicture(kFilmPlace);
    ui->labelInputVideo->setPixmap(QPixmap::fromImage(tmpQimage));
    ui->btn_menu_ThumbnailVideoPlayPause->setIcon(graphicIcon("btn_play.png"));
    gst_QueueVideoFilePipeline();
    ChangeMainState(eStatePlaybackMovieQueued);
}

void MainWindow::displaySelectedPicture()
{
    placePicture(kPicturePlace);
    const QImage picture = readPicture(hostPathInFolder(g_SavedFSInfo.currSelectedFile), kFinestPicture);
    m_shown.fileIsReadable = !picture.isNull();
    ui->labelInputVideo->setPixmap(m_shown.fileIsReadable ? QPixmap::fromImage(picture)
                                                          : QPixmap(graphic("popup_image_error.png")));
    showNoteButton();
    ChangeMainState(eStatePlaybackSnapshot);
}

void MainWindow::enterPlaybackNothingSaved()
{
    genericDelayTimer->stop();
    imageTimer->stop();
    recordAudioTimer->stop();
    closeEditor();
    ui->pb_PlaybackIndicator->setValue(0);
    ui->lbl_CurrentFilenameandPath->clear();
    placePicture(kFilmPlace);
    ui->labelInputVideo->setPixmap(QPixmap(graphic("no_pictures_bg.png")));
    emit BusyIndicator(false);
}

void MainWindow::leaveBrowser()
{
    emit BusyIndicator(false);
    placePicture(kFilmPlace);
    if (m_card == CardHold::Taken)
        showCurrentFolder();
    ChangeMainState(eStateLive);
    buildLivePicture();
    showLivePicture();
}

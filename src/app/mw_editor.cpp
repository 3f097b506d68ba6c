// The picture editor: its tools, its states, and what it saves.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "dialogs/colorpicker.h"
#include "dialogs/damagecatelog.h"
#include "dialogs/editorscene.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/capturenames.h"
#include "storage/dcim.h"
#include "storage/eventlog.h"
#include "storage/listing.h"
#include "storage/position.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"

#include <QTimer>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr int kSavingShown = 1000; // ms

struct Tool
{
    eMode mode;
    QPushButton *Ui_MainWindow::*button;
    const char *activePicture;
};
constexpr std::array kTools = {
    Tool{eInsertLine, &Ui_MainWindow::btn_menu_ThumbnailImageEditArrow, "btn_imageedit_add_arrow_active.png"},
    Tool{eInsertCircle, &Ui_MainWindow::btn_menu_ThumbnailImageEditCircle,
         "btn_imageedit_add_circle_active.png"},
    Tool{eInsertText, &Ui_MainWindow::btn_menu_ThumbnailImageEditText, "btn_imageedit_add_text_active.png"}};

} // namespace

void MainWindow::createEditorScene()
{
    mainScene = new editorScene(this);
    mainScene->setSceneRect(0, 0, kFrameWidth, kFrameHeight);
    mainScene->setColor(m_pParams->getParams().currEditorColor);
    ui->gv_MainView->setScene(mainScene);
    ui->gv_MainView->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    connect(mainScene, &editorScene::ClearPictureEditorButtons, this,
            &MainWindow::onClearPictureEditorButtons);
}

void MainWindow::on_btn_menu_ThumbnailEditImage_clicked()
{
    if (!g_FileListing[size_t(g_selectedItemFileIndex)].isVideo)
        stopPlayback(); // a voice note; a film stands at the frame that is to be marked
    route(eEventThumbnailEditImage, "Thumbnail Edit Image button clicked", eStatePlaybackEditImage);
}

void MainWindow::on_btn_menu_ThumbnailImageEditBack_clicked()
{
    UpdateEventLog(eEventThumbnailImageEditBack, QStringLiteral("Thumbnail Image Edit Back button clicked"));
    ProcessBackRequest();
}

void MainWindow::on_btn_menu_ThumbnailImageEditArrow_clicked()
{
    route(eEventThumbnailImageEditArrow, "Thumbnail Image Edit Arrow button clicked",
          eStatePlaybackEditAddArrow);
}

void MainWindow::on_btn_menu_ThumbnailImageEditCircle_clicked()
{
    route(eEventThumbnailImageEditCircle, "Thumbnail Image Edit Circle button clicked",
          eStatePlaybackEditAddCircle);
}

void MainWindow::on_btn_menu_ThumbnailImageEditText_clicked()
{
    route(eEventThumbnailImageEditText, "Thumbnail Image Edit Text button clicked",
          eStatePlaybackEditAddText);
}

void MainWindow::on_btn_menu_ThumbnailImageEditColor_clicked()
{
    route(eEventThumbnailImageEditColor, "Thumbnail Image Edit Color button clicked",
          eStatePlaybackEditColor);
}

void MainWindow::on_btn_menu_ThumbnailImageEditDeleteItem_clicked()
{
    route(eEventThumbnailImageEditDeleteItem, "Thumbnail Image Edit Delete Item button clicked",
          eStatePlaybackEditDeleteItem);
}

void MainWindow::on_btn_menu_ThumbnailImageEditSave_clicked()
{
    route(eEventThumbnailImageEditSave, "Thumbnail Image Edit Save button clicked",
          eStatePlaybackEditSaveImage);
}

void MainWindow::enterPlaybackEditImage()
{
    mainScene->setPicture(ui->labelInputVideo->shownPicture());
}

void MainWindow::showTool(int mode)
{
    onClearPictureEditorButtons();
    for (const Tool &tool : kTools) {
        if (tool.mode == mode)
            (*ui.*tool.button)->setIcon(graphicIcon(tool.activePicture));
    }
}

void MainWindow::enterPlaybackEditAddArrow()
{
    showTool(eInsertLine);
    mainScene->setMode(eInsertLine);
}

void MainWindow::enterPlaybackEditAddCircle()
{
    showTool(eInsertCircle);
    mainScene->setMode(eInsertCircle);
}

void MainWindow::enterPlaybackEditAddText()
{
    showTool(eInsertText);
    mainScene->setMode(eMoveItem); // the tool taken before is laid down, whatever comes
    const bool wasOffered = m_pParams->getParams().MSDC_ModuleInstalled; // not while a film stands open
    ActivateMSDC(false);
    DamageCatelog catalog(this);
    catalog.init();
    ask(catalog);
    if (catalog.returnValue && !catalog.returnDamageDescription.isEmpty()) {
        mainScene->setText(catalog.returnDamageDescription);
        mainScene->setMode(eInsertText);
    } else {
        onClearPictureEditorButtons();
    }
    if (wasOffered)
        ActivateMSDC(true);
}

void MainWindow::enterPlaybackEditColor()
{
    QColor &current = m_pParams->getParams().currEditorColor;
    onClearPictureEditorButtons();
    ColorPicker picker(this);
    picker.closeWithCard(this);
    picker.setColor(current.isValid() ? current : mainScene->drawingColor());
    picker.init();
    ask(picker);
    current = picker.selectedColor;
    mainScene->setColor(current);
    showTool(mainScene->mode()); // the tool taken before is still in the hand
}

void MainWindow::enterPlaybackEditDeleteItem()
{
    mainScene->deleteSelectedItem();
    if (!mainScene->hasItems())
        m_pParams->getParams().bPictureEdited = false; // nothing is left that a question could be about
}

void MainWindow::enterPlaybackEditSaveImage()
{
    const eMainStates previous = g_prevMainState;
    if (isDiskFull() && SDCardInfo.inserted) {
        restoreMainState(previous);
        tellCardTakesNothing();
        return;
    }
    if (!mayCapture(previous))
        return;
    m_editedName = freeEditedName(g_SavedFSInfo.currSelectedFile, QTime::currentTime());
    ui->lbl_saving_filename->setText(m_editedName);
    ui->lbl_saving_thumbnail->setPixmap(QPixmap::fromImage(mainScene->rendered().scaled(
        ui->lbl_saving_thumbnail->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    popUpTimer->start(kSavingShown);
}

void MainWindow::enterPlaybackEditSaveImageExit()
{
    if (ui->gv_MainView->isHidden()) {
        // The pop-up of a still, from which another screen has come in between.
        restoreMainState(g_prevMainState);
        return;
    }
    if (!saveEditedImage()) {
        restoreMainState(eStatePlaybackEditImage);
        isDiskFull(); // the figures for the picture that fits
        tellCardTakesNothing();
        return;
    }
    m_pParams->getParams().bPictureEdited = false;
    ChangeMainState(eStatePlaybackEditImage);
}

bool MainWindow::saveEditedImage()
{
    const QString announced = std::exchange(m_editedName, QString());
    const QString name = announced.isEmpty()
                             ? freeEditedName(g_SavedFSInfo.currSelectedFile, QTime::currentTime())
                             : announced;
    QImage picture = mainScene->rendered();
    if (g_FileListing[size_t(g_selectedItemFileIndex)].isVideo)
        picture = stillpicture::underBand(QImage(graphic("quenvale_brand_base_image.png")), picture);
    if (!stillpicture::save(picture, inCurrentFolder(name)))
        return false;
    mainScene->clear();
    onClearPictureEditorButtons();
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    // The new file is not always the last one: clocks are set back.
    g_selectedItemFileIndex = std::max(indexInListing(g_SavedFSInfo.currSelectedFile), 0);
    countPages();
    return true;
}

void MainWindow::leaveEditor()
{
    bool &isEdited = m_pParams->getParams().bPictureEdited;
    if (std::exchange(isEdited, false)) {
        const bool wanted = confirm("confirmation_save_picture.png");
        if (wanted && (isDiskFull() || !restoreCurrentFolder() || !saveEditedImage())) {
            isEdited = true;
            tellCardTakesNothing();
            return;
        }
    }
    closeEditor();
    if (g_SavedFSInfo.currSelectedFile.contains(QLatin1String(".avi")))
        ChangeMainState(eStatePlaybackMoviePaused);
    else
        displaySelectedThumbnail();
}

void MainWindow::closeEditor()
{
    if (ui->gv_MainView->isHidden())
        return;
    popUpTimer->stop();
    m_editedName.clear();
    mainScene->clear();
    onClearPictureEditorButtons();
    m_pParams->getParams().bPictureEdited = false;
}

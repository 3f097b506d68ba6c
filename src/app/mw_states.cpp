// The walk through the states of core/states.h, and the one place that shows and hides what is on the screen.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "core/screens.h"
#include "media/boardelements.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/listing.h"
#include "storage/position.h"

#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QTimer>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.app.state")

// The exit button lies in the corner that the top bar covers; on the tools page the bar stands beside it.
constexpr int kTopBarX = 80;
constexpr int kTopBarXBesideExit = 80 - 32;

} // namespace

void MainWindow::MainStateMachine()
{
    using EntryAction = void (MainWindow::*)();
    static constexpr EntryAction kEntryActions[] = {
#define TUBIX_MARK(state, ...) nullptr,
#define TUBIX_ENTER(state, action, ...) &MainWindow::action,
        TUBIX_STATES(TUBIX_MARK, TUBIX_ENTER)
#undef TUBIX_MARK
#undef TUBIX_ENTER
    };
    if (const EntryAction enter = kEntryActions[g_MainState]) {
        const QScopedValueRollback atWork(m_waiting.actions, m_waiting.actions + 1);
        (this->*enter)();
    }
    showScreen();
}

void MainWindow::ChangeMainState(eMainStates next)
{
    g_prevMainState = g_MainState;
    g_MainState = next;
    // A broken pipeline is handed in again and again; one line tells it.
    if (g_prevMainState != next)
        qCDebug(log) << stateName(g_prevMainState) << "->" << stateName(next);
    MainStateMachine();
}

void MainWindow::restoreMainState(eMainStates state)
{
    qCDebug(log) << stateName(g_MainState) << "-> back to" << stateName(state);
    g_prevMainState = g_MainState;
    g_MainState = state;
    showScreen();
}

ScreenFacts MainWindow::screenFacts() const
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    ScreenFacts facts;
    facts.screen = m_shown.batteryIsCritical ? ScreenKind::Battery : factsOf(g_MainState).screen;
    if (facts.screen == ScreenKind::AsBefore)
        facts.screen = m_shown.screen;
    facts.state = g_MainState;
    facts.hasCard = m_card == CardHold::Taken;
    facts.guiDraws = !displayDraws(boardElements());
    facts.isBusy = m_shown.isBusy;
    facts.hasPicture = m_shown.hasPicture;
    facts.page = g_SavedFSInfo.currThumbnailPage;
    facts.pages = g_SavedFSInfo.NumberOfThumbnailPages;
    const sSnakeFileInfo &file = g_FileListing[size_t(g_selectedItemFileIndex)];
    facts.isVideo = file.isVideo;
    facts.isAnnotated = file.annotated;
    facts.isReadable = m_shown.fileIsReadable;
    facts.hasMicrophone = settings.bMicrophoneActive;
    facts.goesOut = genericDelayTimer->isActive();
    facts.hasMiniModule = settings.MiniModulePresent;
    facts.isCatalogOpen = m_shown.isCatalogOpen;
    return facts;
}

void MainWindow::showScreen()
{
    const ScreenFacts facts = screenFacts();
    for (const ScreenWidget &widget : m_screenWidgets) {
        if (widget.rule->isVisible)
            widget.widget->setVisible(widget.rule->isVisible(facts));
        if (widget.rule->isEnabled)
            widget.widget->setEnabled(widget.rule->isEnabled(facts));
    }
    ui->frm_TopBar->move(facts.screen == ScreenKind::Tools ? kTopBarXBesideExit : kTopBarX, 0);
    ui->gv_MainView->setInteractive(g_MainState != eStatePlaybackEditSaveImage);
    if (facts.screen != m_shown.screen)
        m_touches->screenChanged();
    m_shown.screen = facts.screen;
}

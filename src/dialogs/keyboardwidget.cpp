#include "dialogs/keyboardwidget.h"
#include "ui_keyboardwidget.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QPushButton>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.dialogs")

constexpr int kKeySpacing = 2;     // pixels
constexpr int kLetterPixels = 30;  // height of the font on a key
constexpr int kCaptionPixels = 22; // on a key that changes the page
constexpr int kDeleteDelay = 500;  // ms until a held delete key repeats
constexpr int kDeleteInterval = 100;

// Typed anywhere in a text, it ends the application: the way out for service staff.
const QString kServiceText = QStringLiteral("quitquitquit");
const QString kFallbackLayout = QStringLiteral(":/keyboardwidget/keyboard_en.xml");

QString symbolOf(eKeyboardSpecialFunction function)
{
    switch (function) {
    case eDeleteKey:
        return QStringLiteral(":/MyGraphicResources/graphics/key_delete.png");
    case eSpaceKey:
        return QStringLiteral(":/MyGraphicResources/graphics/key_space.png");
    case eDoneKey:
        return QStringLiteral(":/MyGraphicResources/graphics/key_done.png");
    default:
        return {};
    }
}

std::optional<KeyboardLayout> layoutIn(const QString &resource)
{
    QFile file(resource);
    QString error;
    std::optional<KeyboardLayout> layout;
    if (file.open(QIODevice::ReadOnly))
        layout = readKeyboardLayout(&file, &error);
    else
        error = file.errorString();
    if (!layout)
        qCWarning(log).noquote() << resource + QLatin1Char(':') << error;
    return layout;
}

} // namespace

keyboardWidget::keyboardWidget(const QString &text, const QString &resource, bool maskKeys, QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      ui(std::make_unique<Ui::keyboardWidget>()), m_maskKeys(maskKeys), m_keyboardResource(resource)
{
    ui->setupUi(this);
    ui->gridKeyboard->setSpacing(kKeySpacing);
    QString line = text;
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    ui->textEdit->setPlainText(line);
    ui->textEdit->moveCursor(QTextCursor::End);
    ui->textEdit->setFilter([this](QChar c) { return mayBeTyped(m_layout, c, m_maskKeys); });
    connect(ui->textEdit, &OneLineEdit::returnPressed, this, &keyboardWidget::finish);
}

keyboardWidget::~keyboardWidget() = default;

void keyboardWidget::init(QObject *owner)
{
    ReadKeyboardConfig();
    createLayout();
    UpdateKeyboard();
    closeWithCard(owner);
}

// A keyboard in another language is better than none.
void keyboardWidget::ReadKeyboardConfig()
{
    std::optional<KeyboardLayout> layout = layoutIn(m_keyboardResource);
    if (!layout)
        layout = layoutIn(kFallbackLayout);
    if (layout)
        m_layout = *layout;
}

void keyboardWidget::createLayout()
{
    const QList<KeyPlace> places = keyPlaces(m_layout);
    int columns = 0;
    for (int key = 0; key < m_layout.g_num_keys; ++key) {
        const eKeyboardSpecialFunction function = m_layout.keyMap[size_t(key)].buttonFuntion;
        auto *button = new QPushButton(ui->gridLayoutWidget);
        buttons[size_t(key)] = button;
        button->setObjectName(QStringLiteral("key%1").arg(key));
        button->setFocusPolicy(Qt::NoFocus);
        // A hidden key keeps its cells, and its text never decides how wide they are.
        QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Ignored);
        policy.setRetainSizeWhenHidden(true);
        button->setSizePolicy(policy);
        const bool changesPage = function == eShiftKey || function == eExendedModeKey;
        QFont keyFont = font();
        keyFont.setPixelSize(changesPage ? kCaptionPixels : kLetterPixels);
        button->setFont(keyFont);
        button->setCheckable(function == eShiftKey);  // lit while the next letter is a capital
        button->setIcon(QPixmap(symbolOf(function))); // shared by every keyboard
        button->setIconSize(QSize(40, 40));
        button->setProperty("special", m_layout.keyMap[size_t(key)].default_char.isNull());
        if (function == eDeleteKey) {
            button->setAutoRepeat(true);
            button->setAutoRepeatDelay(kDeleteDelay);
            button->setAutoRepeatInterval(kDeleteInterval);
        }
        connect(button, &QPushButton::clicked, this, [this, key] { KeyboardClicked(key); });
        const KeyPlace &place = places.at(key);
        ui->gridKeyboard->addWidget(button, place.row, place.column, 1, place.columns);
        ui->gridKeyboard->setRowStretch(place.row, 1);
        columns = std::max(columns, place.end());
    }
    for (int column = 0; column < columns; ++column)
        ui->gridKeyboard->setColumnStretch(column, 1);
}

void keyboardWidget::UpdateKeyboard()
{
    for (int key = 0; key < m_layout.g_num_keys; ++key) {
        const s_keyMapping &mapping = m_layout.keyMap[size_t(key)];
        QPushButton *button = buttons[size_t(key)];
        QString label = keyLabel(m_layout, key, g_KeyboardState);
        button->setText(label.replace(QLatin1Char('&'), QLatin1String("&&")));
        button->setVisible(isOffered(mapping, g_KeyboardState, m_maskKeys));
        button->setChecked(g_KeyboardState == eShifted); // the shift key alone can be
    }
}

void keyboardWidget::KeyboardClicked(int key)
{
    if (key < 0 || key >= m_layout.g_num_keys)
        return;
    const s_keyMapping &mapping = m_layout.keyMap[size_t(key)];
    switch (mapping.buttonFuntion) {
    case eShiftKey:
    case eExendedModeKey:
        break;
    case eDeleteKey:
        ui->textEdit->textCursor().deletePreviousChar();
        ui->textEdit->ensureCursorVisible();
        return;
    case eDoneKey:
        finish();
        return;
    case eSpaceKey:
        ui->textEdit->type(QStringLiteral(" "));
        break;
    default:
        ui->textEdit->type(characterOf(mapping, g_KeyboardState));
    }
    g_KeyboardState = stateAfter(g_KeyboardState, mapping.buttonFuntion);
    UpdateKeyboard();
}

void keyboardWidget::finish()
{
    const QString text = ui->textEdit->toPlainText();
    if (text.contains(kServiceText)) {
        QCoreApplication::quit();
        reject();
        return;
    }
    returnableText = text;
    accept();
}

void keyboardWidget::on_btn_Cancel_clicked()
{
    returnableText.clear();
    reject();
}

void keyboardWidget::onSDCardRemoved()
{
    on_btn_Cancel_clicked();
}

// At the lower edge of the screen, where the thumbs are. The parent may be a dialog itself.
void keyboardWidget::showEvent(QShowEvent *event)
{
    UnitDialog::showEvent(event);
    const QWidget *under = this;
    while (under->parentWidget())
        under = under->parentWidget()->window();
    if (under != this)
        move(under->mapToGlobal(QPoint((under->width() - width()) / 2, under->height() - height())));
    activateWindow(); // the cursor is drawn in the active window alone
}

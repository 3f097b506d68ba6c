// The touch keyboard of the unit: one line of text, typed in the user's own script.
#pragma once

#include "dialogs/keyboardlayout.h"
#include "dialogs/unitdialog.h"

#include <array>
#include <memory>

class QPushButton;
namespace Ui {
class keyboardWidget;
}

class keyboardWidget : public UnitDialog
{
    Q_OBJECT

public:
    // Build, init(), exec(), read returnableText. `text` is what the field starts with; `resource` the layout
    // (":/keyboardwidget/keyboard_en.xml"); `maskKeys` where the text becomes a name on the card.
    keyboardWidget(const QString &text, const QString &resource, bool maskKeys, QWidget *parent);
    ~keyboardWidget() override;

    // Reads the layout and builds the keys; before exec(). When `owner` has a signal SDCardRemoved(), that
    // cancels the dialog.
    void init(QObject *owner);

    // The typed text, and empty after cancel. A field that was confirmed empty is told apart by exec(), which
    // returns Accepted for "done" alone.
    QString returnableText;

public slots:
    void KeyboardClicked(int key);
    void on_btn_Cancel_clicked();
    void onSDCardRemoved() override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void ReadKeyboardConfig();
    void createLayout();
    void UpdateKeyboard();
    void finish(); // the done key

    std::unique_ptr<Ui::keyboardWidget> ui;
    std::array<QPushButton *, kMostKeys> buttons = {}; // the first g_num_keys, owned by the window
    KeyboardLayout m_layout;
    eKeyboardState g_KeyboardState = eDefault;
    const bool m_maskKeys;
    const QString m_keyboardResource;
};

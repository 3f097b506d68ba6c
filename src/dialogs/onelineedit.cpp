#include "dialogs/onelineedit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>

#include <algorithm>

OneLineEdit::OneLineEdit(QWidget *parent) : QTextEdit(parent)
{
    setAcceptRichText(false);
}

void OneLineEdit::setFilter(std::function<bool(QChar)> mayBeTyped)
{
    m_mayBeTyped = std::move(mayBeTyped);
}

QString OneLineEdit::passing(const QString &text) const
{
    QString kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept), m_mayBeTyped);
    return kept;
}

void OneLineEdit::type(const QString &text)
{
    textCursor().insertText(passing(text));
    ensureCursorVisible();
}

void OneLineEdit::keyPressEvent(QKeyEvent *event)
{
    const QString text = event->text();
    const bool isShortcut = (event->modifiers() & ~Qt::ShiftModifier) == Qt::ControlModifier;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        emit returnPressed();
    else if (!isShortcut && !text.isEmpty() && text.at(0).category() != QChar::Other_Control)
        type(text);
    else
        QTextEdit::keyPressEvent(event); // moves, deletes, pastes
}

void OneLineEdit::inputMethodEvent(QInputMethodEvent *event)
{
    QInputMethodEvent filtered(event->preeditString(), event->attributes());
    filtered.setCommitString(passing(event->commitString()), event->replacementStart(),
                             event->replacementLength());
    QTextEdit::inputMethodEvent(&filtered);
}

void OneLineEdit::insertFromMimeData(const QMimeData *source)
{
    type(source->text());
}

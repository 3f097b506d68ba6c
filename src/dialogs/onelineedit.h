// A text field that holds one line of what its owner lets in, whatever types, pastes or composes it.
#pragma once

#include <QTextEdit>

#include <functional>

class OneLineEdit : public QTextEdit
{
    Q_OBJECT

public:
    explicit OneLineEdit(QWidget *parent = nullptr);

    void setFilter(std::function<bool(QChar)> mayBeTyped);
    void type(const QString &text); // what passes the filter, at the cursor

signals:
    void returnPressed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    QString passing(const QString &text) const;

    std::function<bool(QChar)> m_mayBeTyped = [](QChar character) { return character.isPrint(); };
};

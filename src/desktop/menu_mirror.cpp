#include "desktop/menu_mirror.h"

#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>
#include <algorithm>

#include "core/command_table.h"
#include "core/event_loop.h"
#include "desktop/event_pump.h"
#include "desktop/shell_text.h"

namespace quillon::desktop {

namespace {

// A menu with more items than this scrolls; otherwise the toolkit would cover the screen with columns.
constexpr std::int16_t long_menu = 30;

// The text with an access key: its first letter that is not among TAKEN, to which the letter is added. Where
// all are taken it has none.
QString with_access_key(const char *title, QString &taken) {
    QString text = label_text(title);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar letter = text[i].toLower();
        if (letter.isLetter() && !taken.contains(letter)) {
            taken += letter;
            return text.insert(i, u'&');
        }
    }
    return text;
}

// Shows the command key beside the item. The shell itself looks command keys up, so the toolkit does not act
// on it outside of the menus. A key that stood in the text would be read as a part of the item's name.
void show_key(QAction *action, char key) {
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + QChar::fromLatin1(key).toUpper()));
}

// A choice by a screen reader leaves the menus open, where one by a key or the mouse closes them.
void close_open_menus() {
    for (int depth = 0; depth < 4; ++depth)
        if (auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget()))
            menu->close();
}

} // namespace

MirrorMenu::MirrorMenu(MenuHandle menu, QWidget *parent) : QMenu(parent), menu_(menu) {
    connect(this, &QMenu::aboutToShow, this, &MirrorMenu::mirror);
}

void MirrorMenu::mirror() {
    FillMenu(menu_);
    ChangeMenus();
    clear();
    taken_.clear();
    for (QMenu *const submenu : submenus_)
        submenu->deleteLater();
    submenus_.clear();
    const std::int16_t count = CountMenuItems(menu_);
    for (std::int16_t item = 1; item <= count; ++item)
        add_item(item);
    if (count == 0)
        addAction(tr("Empty"))->setEnabled(false); // this line is no item of the shell's menu
    if (count > long_menu && styleSheet().isEmpty())
        setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1; }"));
}

// Moves to the next item that begins with the letter, as the arrow keys do, without opening a submenu.
void MirrorMenu::go_to_letter(QChar letter) {
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    const QAction *const from = activeAction();
    for (qsizetype step = 0; step < actions().size(); ++step) {
        QMenu::keyPressEvent(&down);
        const QAction *const item = activeAction();
        if (!item || item == from || item->text().startsWith(letter, Qt::CaseInsensitive))
            return;
    }
}

// True when an item that can be chosen begins with the letter, and none has it as its access key.
bool MirrorMenu::has_letter(QChar letter) const {
    const QList<QAction *> items = actions();
    if (taken_.contains(letter.toLower()))
        return false;
    return std::any_of(items.begin(), items.end(), [letter](const QAction *item) {
        return item->isEnabled() && !item->isSeparator() &&
               item->text().startsWith(letter, Qt::CaseInsensitive);
    });
}

void MirrorMenu::keyPressEvent(QKeyEvent *event) {
    const bool is_letter = event->text().size() == 1 && event->text().front().isLetterOrNumber();
    const bool plain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0;
    if (is_letter && plain && has_letter(event->text().front()))
        go_to_letter(event->text().front());
    else
        QMenu::keyPressEvent(event);
}

// Says why a grey item is grey. The toolkit's own tips would repeat the text of every item.
bool MirrorMenu::event(QEvent *event) {
    if (event->type() != QEvent::ToolTip)
        return QMenu::event(event);
    const auto *const help = static_cast<QHelpEvent *>(event);
    const QAction *const item = actionAt(help->pos());
    if (item && !item->statusTip().isEmpty())
        QToolTip::showText(help->globalPos(), item->statusTip(), this,
                           actionGeometry(const_cast<QAction *>(item)));
    else
        QToolTip::hideText();
    return true;
}

void MirrorMenu::add_item(std::int16_t item) {
    if (IsSeparator(menu_, item)) {
        addSeparator();
        return;
    }
    BoundedString<1024> bytes;
    GetMenuItemText(menu_, item, bytes);
    // Names of files, formats and applications have no access keys: the letters go through them.
    const Command *const row = find_command(GetMenuID(menu_), item);
    const bool fixed = row && row->item == item;
    const QString text = fixed ? with_access_key(bytes.c_str(), taken_) : label_text(bytes.c_str());
    QAction *action = nullptr;
    if (const std::int16_t submenu = GetMenuItemHierarchicalID(menu_, item)) {
        submenus_.append(new MirrorMenu(GetMenuHandle(submenu), this));
        action = addMenu(submenus_.last());
        action->setText(text);
    } else {
        action = addAction(text);
        const auto choice =
            static_cast<std::uint32_t>(GetMenuID(menu_)) << 16 | static_cast<std::uint32_t>(item);
        connect(action, &QAction::triggered, this, [choice] {
            close_open_menus();
            post_event(mouseDown, choice, event_modifiers(QGuiApplication::queryKeyboardModifiers()));
        });
    }
    if (HasItsKey(menu_, item))
        show_key(action, GetItemCmd(menu_, item));
    action->setEnabled(IsMenuItemEnabled(menu_, item) != 0);
    const char *const reason = fixed && !action->isEnabled() ? why_grey(*row) : nullptr;
    action->setStatusTip(reason ? QString::fromUtf8(reason) : QString());
    action->setCheckable(IsItemChecked(menu_, item) != 0);
    action->setChecked(IsItemChecked(menu_, item) != 0);
}

MenuMirror::MenuMirror(QMenuBar *bar) : bar_(bar) {
    // The bar gets its height now, although the shell makes its menus later.
    bar_->addAction(QStringLiteral(" "));
    bar_->setMinimumHeight(bar_->sizeHint().height());
    bar_->clear();
}

void MenuMirror::sync() {
    if (seen_ == MenuChangeCount())
        return;
    seen_ = MenuChangeCount();
    QList<MenuHandle> handles;
    for (int index = 0; MenuHandle handle = GetMenuOfBar(index); ++index)
        handles.append(handle);
    if (handles != handles_) {
        bar_->clear();
        qDeleteAll(menus_);
        menus_.clear();
        QString taken;
        for (const MenuHandle handle : handles) {
            menus_.append(new MirrorMenu(handle, bar_));
            menus_.last()->setTitle(with_access_key(GetMenuTitle(handle), taken));
            bar_->addMenu(menus_.last());
        }
        handles_ = handles;
    }
    for (qsizetype i = 0; i < menus_.size(); ++i)
        menus_[i]->menuAction()->setEnabled(admitted_ && IsMenuItemEnabled(handles_[i], 0));
}

void MenuMirror::set_commands_admitted(bool admitted) {
    if (admitted == admitted_)
        return;
    admitted_ = admitted;
    if (!admitted)
        for (MirrorMenu *const menu : menus_)
            menu->close();
    for (qsizetype i = 0; i < menus_.size(); ++i)
        menus_[i]->menuAction()->setEnabled(admitted && IsMenuItemEnabled(handles_[i], 0));
}

} // namespace quillon::desktop

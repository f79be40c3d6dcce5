// The menu bar on screen, which shows the shell's menus. A menu's items are made when it is about to open,
// and a choice becomes an event for the shell.
#ifndef QUILLON_DESKTOP_MENU_MIRROR_H
#define QUILLON_DESKTOP_MENU_MIRROR_H

#include <QList>
#include <QMenu>
#include <QMenuBar>
#include <cstdint>

#include "toolbox/menus.h"

namespace quillon::desktop {

// One menu on screen.
class MirrorMenu : public QMenu {
  public:
    // MENU is the shell's menu to show, which lasts as long as the process.
    MirrorMenu(MenuHandle menu, QWidget *parent);
    // Makes the items anew from the shell's menu.
    void mirror();

  protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

  private:
    bool has_letter(QChar letter) const;
    void go_to_letter(QChar letter);
    void add_item(std::int16_t item);

    const MenuHandle menu_;
    QList<QMenu *> submenus_;
    QString taken_; // the access keys of the items, in small letters
};

// All menus of the bar.
class MenuMirror {
  public:
    // BAR belongs to the caller and must last longer than this.
    explicit MenuMirror(QMenuBar *bar);
    // Brings the titles of the bar in line with the shell's menus; it is cheap when nothing changed.
    void sync();
    // Disables all menus and closes an open one (false), or enables them again (true).
    void set_commands_admitted(bool admitted);

  private:
    QMenuBar *const bar_;
    QList<MirrorMenu *> menus_;
    QList<MenuHandle> handles_;
    std::uint32_t seen_ = 0;
    bool admitted_ = true;
};

} // namespace quillon::desktop

#endif

// The menu bar on screen, a mirror of the shell's menus: a menu's items are made when it is about to show,
// and a choice only becomes an event for the shell.
#ifndef QUILLON_DESKTOP_MENU_MIRROR_H
#define QUILLON_DESKTOP_MENU_MIRROR_H

#include <QList>
#include <QMenu>
#include <QMenuBar>
#include <cstdint>

#include "toolbox/menus.h"

namespace quillon::desktop {

class MirrorMenu : public QMenu {
  public:
    MirrorMenu(MenuHandle menu, QWidget *parent);
    // Makes the items anew from the shell's menu.
    void mirror();

  protected:
    void keyPressEvent(QKeyEvent *event) override;

  private:
    bool has_letter(QChar letter) const;
    void go_to_letter(QChar letter);
    void add_item(std::int16_t item);

    const MenuHandle menu_;
    QList<QMenu *> submenus_;
};

class MenuMirror {
  public:
    explicit MenuMirror(QMenuBar *bar);
    // Brings the titles in line with the shell's menus; cheap when nothing changed.
    void sync();
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

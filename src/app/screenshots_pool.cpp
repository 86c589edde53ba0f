// The pooling dialogs for the screenshot session: frmPoolSelect with files moved across,
// and frmLoadGroupData with a group count typed.
#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <filesystem>

#include "app/screenshots.h"
#include "pool/forms/frm_pool_select.h"

namespace tessaly::app {

void PoolScreenshots(QWidget* parent, const QString& dir, const std::filesystem::path& program) {
  auto grab = [](QWidget& w, const QString& file) {
    w.show();
    QApplication::processEvents();
    w.grab().save(file);
    w.hide();
  };
  std::vector<std::string> files{"STORE01.ASC", "STORE02.ASC", "STORE03.ASC", "STORE04.ASC", "STORE05.ASC",
                                 "STORE06.ASC", "STORE07.ASC"};
  pool::frmPoolSelect select(parent, files, (program / "examples").string());
  grab(select, dir + "/pool_select.png");
  for (int row : {0, 1, 2}) select.lstRoster->item(row)->setSelected(true);
  select.cmdAdd_Click();
  grab(select, dir + "/pool_select_chosen.png");
  pool::frmLoadGroupData groups(parent, 144);
  groups.txtGroupData->setText("3");
  grab(groups, dir + "/pool_groups.png");
}

}  // namespace tessaly::app

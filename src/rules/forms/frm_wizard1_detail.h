#pragma once
// What frmWizard1's source files share with each other and nobody else needs.
#include <QFont>
#include <QLabel>
#include <QString>
#include <string_view>

namespace tessaly::rules::frm_wizard1_detail {

inline QString Q(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<int>(s.size())); }

inline QLabel* Note(QWidget* parent, const QString& text) {
  auto* l = new QLabel(text, parent);
  l->setWordWrap(true);
  return l;
}

inline QLabel* Heading(QWidget* parent, const QString& text) {
  auto* l = new QLabel(text, parent);
  QFont f = l->font();
  f.setBold(true);
  l->setFont(f);
  return l;
}

}  // namespace tessaly::rules::frm_wizard1_detail

#include "platform/forms/qt_dialog_host.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace tessaly::platform {

namespace {
QWidget* Parent() { return QApplication::activeWindow(); }

QString Q(const std::string& s) { return QString::fromStdString(s); }

// Line ends of the system's texts are CR LF; Qt shows a CR as a glyph on some styles.
QString MessageText(const std::string& text) {
  QString t = Q(text);
  t.replace("\r\n", "\n");
  t.replace('\r', '\n');
  return t;
}

std::string Dir(const FileDialogRequest& r) {
  if (r.initial_name.empty()) return r.initial_dir;
  if (r.initial_dir.empty()) return r.initial_name;
  return r.initial_dir + "/" + r.initial_name;
}
}  // namespace

std::string QtFilterFromPattern(const std::string& filter) {
  // Pairs of "description|pattern": Qt needs only the descriptions, which carry the patterns.
  std::vector<std::string> parts;
  size_t start = 0;
  while (true) {
    size_t bar = filter.find('|', start);
    parts.push_back(filter.substr(start, bar == std::string::npos ? std::string::npos : bar - start));
    if (bar == std::string::npos) break;
    start = bar + 1;
  }
  std::string out;
  for (size_t i = 0; i + 1 < parts.size(); i += 2) {
    std::string desc = parts[i];
    const std::string& pattern = parts[i + 1];
    if (desc.find('(') == std::string::npos) desc += " (" + pattern + ")";
    if (!out.empty()) out += ";;";
    out += desc;
  }
  if (parts.size() == 1) out = parts[0];
  return out;
}

int16_t QtDialogHost::Message(const std::string& text, int16_t type, const std::string& title) {
  QMessageBox box(Parent());
  box.setWindowTitle(Q(title));
  box.setText(MessageText(text));
  switch (type & 0x70) {
    case mb::Critical: box.setIcon(QMessageBox::Critical); break;
    case mb::Question: box.setIcon(QMessageBox::Question); break;
    case mb::Exclamation: box.setIcon(QMessageBox::Warning); break;
    case mb::Information: box.setIcon(QMessageBox::Information); break;
    default: box.setIcon(QMessageBox::NoIcon); break;
  }
  struct Choice {
    QMessageBox::StandardButton button;
    int16_t answer;
  };
  std::vector<Choice> choices;
  switch (mb::Buttons(type)) {
    case mb::OKCancel: choices = {{QMessageBox::Ok, mb::OK}, {QMessageBox::Cancel, mb::Cancel}}; break;
    case mb::AbortRetryIgnore:
      choices = {{QMessageBox::Abort, mb::Abort}, {QMessageBox::Retry, mb::Retry},
                 {QMessageBox::Ignore, mb::Ignore}};
      break;
    case mb::YesNoCancel:
      choices = {{QMessageBox::Yes, mb::Yes}, {QMessageBox::No, mb::No},
                 {QMessageBox::Cancel, mb::Cancel}};
      break;
    case mb::YesNo: choices = {{QMessageBox::Yes, mb::Yes}, {QMessageBox::No, mb::No}}; break;
    case mb::RetryCancel:
      choices = {{QMessageBox::Retry, mb::Retry}, {QMessageBox::Cancel, mb::Cancel}};
      break;
    default: choices = {{QMessageBox::Ok, mb::OK}}; break;
  }
  QMessageBox::StandardButtons buttons;
  for (const Choice& c : choices) buttons |= c.button;
  box.setStandardButtons(buttons);
  size_t default_index = (type & mb::DefaultButton2) && choices.size() > 1 ? 1 : 0;
  box.setDefaultButton(choices[default_index].button);
  box.exec();
  QAbstractButton* clicked = box.clickedButton();
  for (const Choice& c : choices)
    if (clicked == box.button(c.button)) return c.answer;
  // Closed by the window's close button or Escape: Cancel where offered, else the first.
  for (const Choice& c : choices)
    if (c.answer == mb::Cancel) return c.answer;
  return choices.front().answer;
}

std::optional<std::string> QtDialogHost::OpenFile(const FileDialogRequest& request) {
  QString file = QFileDialog::getOpenFileName(Parent(), Q(request.title), Q(Dir(request)),
                                              Q(QtFilterFromPattern(request.filter)));
  if (file.isEmpty()) return std::nullopt;
  return file.toStdString();
}

std::optional<std::string> QtDialogHost::SaveFile(const FileDialogRequest& request) {
  QString file = QFileDialog::getSaveFileName(Parent(), Q(request.title), Q(Dir(request)),
                                              Q(QtFilterFromPattern(request.filter)));
  if (file.isEmpty()) return std::nullopt;
  return file.toStdString();
}

std::optional<std::string> QtDialogHost::ChooseFolder(const std::string& title,
                                                      const std::string& initial_dir) {
  QString dir = QFileDialog::getExistingDirectory(Parent(), Q(title), Q(initial_dir));
  if (dir.isEmpty()) return std::nullopt;
  return dir.toStdString();
}

}  // namespace tessaly::platform

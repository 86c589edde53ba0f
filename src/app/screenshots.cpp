#include "app/screenshots.h"
#include "app/screenshots_genseries.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QRadioButton>
#include <QScreen>
#include <QMessageBox>
#include <QPushButton>
#include <QSet>
#include <QTimer>
#include <QTreeWidget>
#include <fstream>
#include <memory>

#include "app/desktop_session.h"
#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "app/screenshots_aggregate.h"
#include "app/screenshots_ux.h"
#include "batch/forms/frm_progress.h"
#include "batch/forms/frm_project_forms.h"
#include "report/forms/frm_allgraphs_sel.h"
#include "rules/forms/frm_wizard1.h"
#include "shell/forms/frm_main.h"
#include "shell/forms/frm_prefs.h"
#include "shell/forms/frm_splash.h"
#include "shell/startup.h"

namespace tessaly::app {

namespace {
void Grab(QWidget& w, const QString& file) {
  w.show();
  QApplication::processEvents();
  w.grab().save(file);
}

QString SubPageName(rules::SubPage p) {
  switch (p) {
    case rules::SubPage::ReviewEditUse: return "review";
    case rules::SubPage::Startmod: return "noise_model";
    case rules::SubPage::Inputmod: return "input_model";
    case rules::SubPage::AutoModelID: return "identification";
    case rules::SubPage::ModelEstimation0: return "estimation";
    case rules::SubPage::ModelEstimation1: return "estimation_tree";
    case rules::SubPage::GroupPC: return "groups";
    case rules::SubPage::LambdaEst: return "lambdas";
    case rules::SubPage::ModelForecasting: return "forecasting";
    case rules::SubPage::Simulation: return "simulation";
    default: return "page";
  }
}

// Walks the wizard on its automatic path ("2. With User  Rules"), taking every page.
class WizardWalk {
 public:
  explicit WizardWalk(QString dir) : dir_(std::move(dir)) {}
  bool Act(rules::frmWizard1& form) {
    rules::RulesWizard& w = form.Wizard();
    if (w.Step() == 0 && !typed_) {
      typed_ = true;
      form.grab().save(dir_ + "/wizard_0_intro.png");
      form.optModelingType[0]->click();
      return true;
    }
    QString name = QString("wizard_%1_%2").arg(w.Step()).arg(w.Step() >= 3 && w.Step() <= 4 ? SubPageName(w.Current()) : QString("page"));
    if (w.Current() == rules::SubPage::ModelEstimation1 && w.Step() == 4) {
      if (node_ < 4) {
        form.TreeView5->setCurrentItem(form.TreeView5->topLevelItem(node_));
        QApplication::processEvents();
        form.grab().save(dir_ + QString("/wizard_4_estimation_tree_ME%1.png").arg(node_ + 1));
        ++node_;
        return true;
      }
    } else if (!taken_.contains(name)) {
      taken_.insert(name);
      form.grab().save(dir_ + "/" + name + ".png");
    }
    if (w.Buttons().next && w.Step() != 5) return ModalRobot::ClickLater(&form, "cmdNav3");
    return ModalRobot::ClickLater(&form, "cmdNav4");
  }

 private:
  QString dir_;
  bool typed_ = false;
  int node_ = 0;
  QSet<QString> taken_;
};

void ProjectForms(QWidget* parent, const QString& dir, const QString& examples) {
  {
    batch::frmASCLoc f(parent);
    f.SetFolder(examples);
    Grab(f, dir + "/frmASCLoc.png");
  }
  auto files = batch::ProjectCommands::AscFilesIn(examples.toStdString());
  {
    batch::frmSelect f(parent);
    f.lists->Fill(files, {files.front(), files.back()});
    Grab(f, dir + "/frmSelect.png");
  }
  {
    batch::frmChooseOut f(parent);
    f.folder->SetFolder(examples);
    Grab(f, dir + "/frmChooseOut.png");
  }
  {
    batch::frmXMLName f(parent);
    f.txtName->setText("monthly");
    f.lblFolder->setText("It is saved in " + examples);
    Grab(f, dir + "/frmXMLName.png");
  }
  {
    batch::frmEdit f(parent);
    f.lists->Fill(files, {files.front()});
    f.lblStatus->setText("Now looking in directory: " + examples);
    Grab(f, dir + "/frmEdit.png");
  }
  {
    batch::frmSelectSeries f(parent, examples, true);
    Grab(f, dir + "/frmSelectSeries.png");
  }
}

// The wizard's model pages: "4. Explicit Model With User Rules" with a new model.
void ModelPages(QWidget* parent, const QString& dir, const fs::path& program, const fs::path& asc,
                const QString& prefix) {
  auto shape = rules::ReadDatasetShape(asc);
  if (!shape) return;
  rules::RulesSession session;
  rules::WizardContext context;
  context.app_folder = program;
  context.project_stem = "sample";
  context.dataset_path = asc;
  context.dataset = *shape;
  rules::RulesWizard wizard(context, session);
  wizard.Load();
  rules::frmWizard1 form(wizard, parent);
  form.show();
  wizard.ClickModelingType(1);
  wizard.Next();
  form.Refresh();
  Grab(form, dir + "/" + prefix + "_2_models.png");
  wizard.SelectEditModel("New");
  wizard.Next();
  form.Refresh();
  Grab(form, dir + "/" + prefix + "_3_" + SubPageName(wizard.Current()) + ".png");
  if (shape->SeriesCount() > 1) {
    wizard.Next();
    form.Refresh();
    Grab(form, dir + "/" + prefix + "_3_" + SubPageName(wizard.Current()) + ".png");
  }
  form.hide();
}

// The pages the option tree opens: the group sizes and the lambda values.
void OptionTreePages(QWidget* parent, const QString& dir, const fs::path& program, const fs::path& asc) {
  auto shape = rules::ReadDatasetShape(asc);
  if (!shape) return;
  rules::RulesSession session;
  rules::WizardContext context;
  context.app_folder = program;
  context.project_stem = "sample";
  context.dataset_path = asc;
  context.dataset = *shape;
  rules::RulesWizard wizard(context, session);
  wizard.Load();
  rules::frmWizard1 form(wizard, parent);
  wizard.ClickModelingType(0);
  for (int i = 0; i < 6 && wizard.Current() != rules::SubPage::ModelEstimation1; ++i) wizard.Next();
  if (wizard.Current() != rules::SubPage::ModelEstimation1) return;
  wizard.AnswerGroups(rules::YesNo::Yes);
  form.Refresh();
  Grab(form, dir + "/wizard_4_groups.png");
  wizard.Back();
  wizard.AnswerLambdas(rules::YesNo::Yes);
  form.Refresh();
  Grab(form, dir + "/wizard_4_lambdas.png");
  form.hide();
}

// A causal dataset for the input-series page: consumption explained by GDP, both from
// the quarterly samples, with GDP's future taken as its last value.
fs::path WriteCausalSample(const fs::path& examples, const fs::path& target) {
  auto values = [](const fs::path& file) {
    std::vector<std::string> lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines.push_back(line);
    }
    // Three objectives, eight properties, the name and the type come first.
    return lines.size() > 13 ? std::vector<std::string>(lines.begin() + 13, lines.end()) : lines;
  };
  auto gdp = values(examples / "REALGDP.ASC");
  auto cons = values(examples / "REALCONS.ASC");
  size_t n = std::min(gdp.size(), cons.size());
  std::ofstream out(target, std::ios::binary);
  for (const char* line : {"0", "0", "0", "2", "4", "1959", "1"}) out << line << "\r\n";
  out << n << "\r\n8\r\n0\r\n8\r\nREALGDP\r\nREALCONS\r\n1\r\n0\r\n";
  for (size_t i = 0; i < n; ++i) out << gdp[i] << "\r\n";
  for (size_t i = 0; i < n; ++i) out << cons[i] << "\r\n";
  for (int i = 0; i < 8; ++i) out << gdp[n - 1] << "\r\n";
  return target;
}
}  // namespace

void TakeScreenshots(shell::frmMain& form, DesktopSession& session, const QString& dir) {
  QTimer::singleShot(900, &form, [&form, &session, dir] {
    form.grab().save(dir + "/main.png");
    {
      shell::frmQuorvaneSplash splash(60000);
      Grab(splash, dir + "/splash.png");
    }
    {
      shell::frmPrefsDecimals d(&form);
      Grab(d, dir + "/prefs_decimals.png");
    }
    {
      shell::frmPrefsGraphs g(&form);
      Grab(g, dir + "/prefs_graphs.png");
      g.optSelect[1]->click();
      g.chkGraphs[0]->setChecked(true);
      g.chkGraphs[3]->setChecked(true);
      Grab(g, dir + "/prefs_graphs_selected.png");
    }
    fs::path program = shell::Shell().program_folder;
    QString examples = QString::fromStdString((program / "examples").string());
    ProjectForms(&form, dir, examples);

    // A run of the sample project, answered by a robot that takes every window it meets.
    auto walk = std::make_shared<WizardWalk>(dir);
    auto progress_taken = std::make_shared<int>(0);
    auto graphs_taken = std::make_shared<bool>(false);
    auto boxes = std::make_shared<int>(0);
    shell::frmMain* main_form = &form;
    auto* robot = new ModalRobot(&form, [walk, progress_taken, graphs_taken, boxes, main_form, dir](QWidget* modal) {
      if (auto* wizard = qobject_cast<rules::frmWizard1*>(modal)) return walk->Act(*wizard);
      if (auto* progress = qobject_cast<batch::frmProgress*>(modal)) {
        // The window as it opens, and a moment later with the engine at work.
        if (*progress_taken == 0) progress->grab().save(dir + "/progress_start.png");
        // Mid-run: the second dataset inside the engine.
        const int stage = progress->SeriesBar->value();
        if (*progress_taken >= 0 && progress->ProjectBar->value() >= 1 && stage >= 1 && stage <= 4) {
          progress->grab().save(dir + "/progress.png");
          *progress_taken = -1000000;
        }
        ++*progress_taken;
        // The same window while a dataset's graphs are drawn, alone and over the main window.
        if (!*graphs_taken && progress->SeriesBar->value() == batch::RunProgressState::kSteps - 1) {
          *graphs_taken = true;
          progress->grab().save(dir + "/progress_graphs.png");
          if (QScreen* screen = QGuiApplication::primaryScreen())
            screen->grabWindow(0).save(dir + "/progress_graphs_screen.png");
        }
        return false;
      }
      if (auto* box = qobject_cast<QMessageBox*>(modal)) {
        box->grab().save(dir + QString("/message_%1.png").arg(++*boxes));
        QTimer::singleShot(0, box, [box] { box->defaultButton() ? box->defaultButton()->click() : box->accept(); });
        return true;
      }
      if (auto* step = qobject_cast<report::frmAllgraphsSel*>(modal)) {
        step->grab().save(dir + "/frmAllgraphsSel.png");
        main_form->grab().save(dir + "/main_all_walk.png");
        return ModalRobot::ClickLater(step, "cmdCancel");
      }
      return false;
    });
    (void)session.OpenProject(program / "examples" / "sample.xml");  // shows in the picture
    form.grab().save(dir + "/main_project_open.png");
    session.mnuBatchRun_Click();
    QApplication::processEvents();
    ReportPane* pane = session.Pane();
    pane->trvMenu->expandAll();
    auto show = [&](const std::string& key, const QString& file) {
      if (QTreeWidgetItem* item = pane->ItemByKey(key)) {
        pane->trvMenu->setCurrentItem(item);
        pane->trvMenu->scrollToItem(item);
        session.trvMenu_NodeClick(key);
        QApplication::processEvents();
        form.grab().save(dir + "/" + file);
      }
    };
    show(batch::RowKey("AIRLINE.ASC", "G4"), "main_after_run_graph.png");
    show(batch::RowKey("AIRLINE.ASC", "R1"), "main_after_run_details.png");
    show(batch::RowKey("AIRLINE.ASC", "R3"), "main_after_run_text.png");
    show("AIRLINE.ASC", "main_after_run_series.png");
    show("BROKEN.ASC", "main_after_run_failed.png");
    show("S6", "main_after_run_summary.png");
    show("AG2", "main_after_walk.png");
    OverviewScreenshots(form, session, dir);
    robot->Stop();
    ModelPages(&form, dir, program, program / "examples" / "AIRLINE.ASC", "wizard_explicit");
    ModelPages(&form, dir, program, WriteCausalSample(program / "examples", program / "CONSGDP.ASC"),
               "wizard_causal");
    OptionTreePages(&form, dir, program, program / "examples" / "AIRLINE.ASC");
    PoolScreenshots(&form, session, dir, program);
    SpreadsheetScreenshots(&form, dir, program);
    TakeAggregationScreenshots(form, session, dir, program);
    GenSeriesScreenshots(&form, dir, program);
    form.mnu_help_Contents_Click();
    QApplication::processEvents();
    if (auto* help = form.findChild<QWidget*>("frmHelp")) Grab(*help, dir + "/help.png");
    form.close();
  });
}

}  // namespace tessaly::app

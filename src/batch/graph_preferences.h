#pragma once
// Which of the nine graphs the run's reports draw. The run holds the user's choice and hands
// it to whatever draws its reports (the report subsystem, the spreadsheet runner's switches).

namespace tessaly::batch {

// The user's graph preferences as the run holds them.
struct GraphPreferences {
  bool all_graphs = true;   // AllGraphs
  bool no_graphs = false;   // NOGRAPHS
  bool sel_graphs = false;  // SelGraphs
  bool act = false;         // chkact
  bool act_cleanse = false; // chkactclen
  bool act_fit = false;     // chkactfit
  bool act_fore = false;    // chkactfore
  bool act_fit_fore = false;// chkactfitfore
  bool act_res = false;     // chkactres
  bool fore = false;        // chkfore
  bool fit_fore = false;    // chkfitfore
  bool res = false;         // chkres
  bool no_limits = false;   // NoLimits: forecasts only, no lower or upper limits
};

// The preferences from the process-wide values, whatever holds them (stored booleans are
// -1 or 0): AllGraphs, NOGRAPHS, SelGraphs, the nine graph values and NoLimits.
template <class Values>
GraphPreferences GraphPreferencesFrom(const Values& v) {
  GraphPreferences p;
  p.all_graphs = v.AllGraphs != 0;
  p.no_graphs = v.NOGRAPHS != 0;
  p.sel_graphs = v.SelGraphs != 0;
  p.act = v.Act != 0;
  p.act_cleanse = v.ActClen != 0;
  p.act_fit = v.ActFit != 0;
  p.act_fore = v.ActFore != 0;
  p.act_fit_fore = v.ActFitFore != 0;
  p.act_res = v.ActRes != 0;
  p.fore = v.Fore != 0;
  p.fit_fore = v.FitFore != 0;
  p.res = v.Res != 0;
  p.no_limits = v.NoLimits != 0;
  return p;
}

}  // namespace tessaly::batch

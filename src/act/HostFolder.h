#pragma once

#include <QString>

namespace corvalent {

// The folder of the program that opens the contact manager's database files: where its Phone.fmt lives.
//
// CORVALENT_CONTACTS_FOLDER, when set, is the answer (for tests and unusual installs). Otherwise the desktop is
// asked which application opens application/x-corvalent-contacts (xdg-mime), that application's .desktop file is
// looked up in the XDG data folders, and the program its Exec line starts is found on PATH. The answer is
// <program folder>/../share/corvalent-contacts when Phone.fmt is there (an installed contact manager keeps its
// data apart from its program), else the program's folder; "" when a step finds nothing.
//
// Each call asks the desktop again; callers keep the answer.
QString FindHostFolder();

} // namespace corvalent

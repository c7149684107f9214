#pragma once

#include <QString>

namespace corvalent::ProgramFolder {

// The program's own folder, where Settings.ini, Presets, country files and the POST page live:
// $CORVALENT_HOME when set, otherwise $XDG_DATA_HOME/corvalent. A folder that does not exist yet, or is empty,
// is created and seeded from the installed data first.
QString path();

// The installed data a new program folder is seeded from ("" when none is found).
QString seedSource();

// Copies every file of `source` that a program folder holds (*.ini, Presets/*.isf, the manual) into `target`
// when it is not there yet; never overwrites.
// Answers false when a copy failed.
bool seed(const QString& target, const QString& source);

// The program folder's `name`. A folder seeded by an older install lacks files added since (the user's manual):
// such a file is copied from `source` first, never over one that is there. Answers the installed copy when the
// folder cannot take it, and "" when neither has it.
QString provide(const QString& name, const QString& source = seedSource());

// Joins a folder and a name with the platform's separator.
QString join(const QString& folder, const QString& name);

} // namespace corvalent::ProgramFolder

#pragma once
// The start-up and shut-down steps that read and write the configuration
// files of the program folder. Each step is an entry point: a bound failure
// inside it ends that step with one "*ERROR: " line and start-up goes on.

namespace vortelm {

struct ProgramState;

// Step 4's tables of this folder: initialisation registers, connection
// state, memory units and registers emptied, identification register
// addresses and log file name to their start values, the feature name list
// filled, the SFR sets cleared, the script variables zeroed.
void ResetConfigurationTables(ProgramState& st);

// Step 5: "mctypes.dat", then "kernel.dat" from the program folder.
void ReadDataFiles(ProgramState& st);
// Step 6: "default.ini" from the program folder.
void ReadDefaultPreferences(ProgramState& st);

// The shut-down steps: "kernel.dat", then "default.ini" in the program folder.
void WriteConfigurationFiles(ProgramState& st);

}  // namespace vortelm

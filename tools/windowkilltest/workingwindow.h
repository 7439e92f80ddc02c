// A window at work by itself, until it is killed.
#pragma once

namespace tessera {

/// The main of such a process: `PROGRAM --work|--end PROJECT FOLDER SEED ACCOUNT`.
///
/// It restores what a former one has left in the folder, else opens the project, and makes steps without end;
/// after --end it makes one, discards all further leftovers and closes its window. Each line of the account
/// is written before the next thing happens: "restored SUM" or "opened", "ready", "taken SUM STEP" for each
/// state that is to be kept, "kept STEP" when it is on the disk, "ended".
int runWorkingWindow(int argc, char** argv);

}  // namespace tessera

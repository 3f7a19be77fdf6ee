// Services of the family: installing, starting and stopping them.
//
//   if (!IsTalvServiceInstalled(KTEXT("fieldwatch"))) {
//     InstallTalvService(KTEXT("fieldwatch"), KTEXT("Field watch"), path, true);
//   }
//   StartTalvService(KTEXT("fieldwatch"));
//
// They are for a process that has the rights: an administrator's, as the elevated helper's is
// (StubCaller.h), or that of a user whom the service's access list lets. Each waits for as long as
// its work takes, and prints on standard output how it goes on. What a result says differs from one
// to the other; how the service really is in the end is the system's to tell.
//
// Threads: any.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

// Installs a program as a service of its own process that starts on demand; the path may have
// arguments behind it, and is in quotes where it has blanks. True where the service has been
// created; with grantEveryone, also only where its access list could be opened, in which every user
// is then let start, stop and delete it. A list that couldn't be changed is told on standard
// output, and true all the same.
KELP0LANG_API bool InstallTalvService(const kelp::WString& name, const kelp::WString& displayName,
                                      const kelp::WString& binaryPath, bool grantEveryone);

// Whether there is a service of that name that may be asked about.
KELP0LANG_API bool IsTalvServiceInstalled(const kelp::WString& name);

// Starts a service and waits while it is starting, for its wait hint anew with each check point it
// comes to; one that is stopping still is waited for first. False where it can't be opened, asked
// or started, or doesn't stop in time. True for one that runs already, and for one that was started
// and hasn't come to run: that is told on standard output, with its state and exit code.
KELP0LANG_API bool StartTalvService(const kelp::WString& name);

// Stops a service, those that depend on it first, and waits for at most 30 seconds in all. False
// only where it can't be opened; true whatever came of the rest, which standard output tells.
KELP0LANG_API bool StopTalvService(const kelp::WString& name);

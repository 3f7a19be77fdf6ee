// The process that looks after a running service; internal to the layer.
#pragma once

#include <winapi_export.h>

namespace winapi {

// The main function of the program "winapi-service": the folder of a service and the stem of its
// files, and behind them what the service is started with. It comes back when the service has
// ended; its caller has had the outcome of the start (kReportEnd) long before.
WINAPI_EXPORT int RunSupervisor(int count, char** arguments);

}  // namespace winapi

// Linked into an example program to run it over the recording bus double of
// the host libtoolkit instead of a bus daemon: the bus client is created, its
// calls are recorded, and nothing is delivered by the bus.
#include "ToolkitHost.h"

namespace {
const bool kRecording = (ToolkitHost::UseRecordingBus(true), true);
}

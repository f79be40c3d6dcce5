// Turns the parameters of an event into those of a message on the bus, and back. A location travels as its
// POSIX path.
#ifndef QUILLON_LINUX_EVENTS_AE_CODEC_H
#define QUILLON_LINUX_EVENTS_AE_CODEC_H

#include "common/event_codec.h"
#include "toolbox/apple_events.h"

namespace quillon {

// The parameters of an event or a reply, as the bus carries them; none for an empty record.
common::Parameters parameters_of(const AppleEvent &record);
// Appends the parameters to RECORD, an event or a reply that was made: 1, or 0 when a value does not fit its
// type, a code is not four characters or a path cannot be a location. RECORD then holds those before it.
int take_parameters(const common::Parameters &parameters, AppleEvent *record);

} // namespace quillon

#endif

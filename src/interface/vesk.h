// The driver instance with the host's callbacks.
#pragma once

#include "engine/tarvo_vesk.h"

class TVesk : public TTarvoVesk {
  public:
    // Passes an error on to SetErrorCode; a step to EventQuery (step 0 only) and EventCheckPrepare.
    void event_checkprepare(unsigned char step, const ETarvoVesk* error) override;
    // Kept: nothing calls it, so no host ever sees EventCloseCheck.
    void OnCheckClose();
    // Asks the register for its firmware unless it is known. Throws ETarvo with errVersion.
    void Identify();
};

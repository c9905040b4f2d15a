#include "cli/SeparationIntent.h"

#include "cli/CommandLine.h"
#include "cli/SessionSettings.h"

namespace teskcolor {

namespace {

// The colour settings' ids in the store, as the colour manager reads them.
constexpr int kColourGroup = 169;
constexpr int kProofId = 171;
constexpr int kProofIntentId = 178;
constexpr int kDefaultProofIntent = 3;

}  // namespace

std::string ChooseSeparationIntent(std::optional<int> requested) {
    if (requested) {
        SetForThisRun(kColourGroup, kProofId, 1);
        SetForThisRun(kColourGroup, kProofIntentId, *requested);
        return "intent: " + IntentText(*requested) + ", from --intent";
    }
    if (StoredInt(kColourGroup, kProofId).value_or(0) != 0) {
        const int proofIntent = StoredInt(kColourGroup, kProofIntentId).value_or(kDefaultProofIntent);
        return "intent: " + IntentText(proofIntent) +
               ", the proof intent, because proofing is on in the settings (--intent overrides it)";
    }
    return "intent: " + IntentText(0) + ", the default while proofing is off in the settings";
}

}  // namespace teskcolor

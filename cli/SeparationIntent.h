// The rendering intent of separations and recombinations. The colour manager
// separates with the proof intent while proofing is on in the settings, and
// perceptually otherwise; a command says which it used, and why.
#pragma once
#include <optional>
#include <string>

namespace teskcolor {

// With `requested` (--intent), this run separates with it; call before the
// colour manager starts. Returns the line to print: "intent: ... (why)".
std::string ChooseSeparationIntent(std::optional<int> requested);

}  // namespace teskcolor

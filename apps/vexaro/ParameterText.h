// The library's parameters (VEXARO_PARAMETERS) as text: for the tool's help and for
// docs/parameters.md, which `vexaro params --markdown` writes.
#pragma once

#include <VexaroParameters.h>

#include <string>

namespace vx::app {

/// The default with its unit: "1.5 m", "1000".
std::string parameterDefaultText(const vexaro::ParameterInfo& p);

/// The values the steps accept: "0 to 1000", "0 or more", "any".
std::string parameterLimitsText(const vexaro::ParameterInfo& p);

/// The names of the steps that read it, or "none".
std::string parameterStepsText(const vexaro::ParameterInfo& p);

/// Every parameter as a Markdown document, grouped; the content of docs/parameters.md.
std::string parametersMarkdown();

} // namespace vx::app

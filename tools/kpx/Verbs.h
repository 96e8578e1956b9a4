#pragma once

#include "tools/kpx/CommandLine.h"

namespace kpx::tool {

// Each adds one family of verbs to the program.
void addConfigVerbs(VerbGroup& program);
void addClassesVerbs(VerbGroup& program);
void addIniVerbs(VerbGroup& program);
void addNasVerbs(VerbGroup& program);
void addRegistryVerbs(VerbGroup& program);
void addTextsVerbs(VerbGroup& program);
void addTimersVerbs(VerbGroup& program);
void addUnzipVerb(VerbGroup& program);
void addErrorsVerbs(VerbGroup& program);
void addLogVerbs(VerbGroup& program);
void addDoctorVerb(VerbGroup& program);
void addXmlVerbs(VerbGroup& program);

}  // namespace kpx::tool

// The report: findings, measured libraries and advice, as text or as JSON; the list of all kinds.
#pragma once

#include <ostream>

#include "check/advice.h"
#include "check/survey.h"

namespace velk::check {

/// The exit status for these findings: 0, 1 with warnings, 2 with errors.
int statusOf(const Findings& findings);

/// Writes the report as text; with colours when `inColour`.
void printText(std::ostream& output, const Survey& survey, const Advice& advice, bool inColour);

/// Writes the report as one JSON document. Bytes that are no UTF-8 become U+FFFD.
void printJson(std::ostream& output, const Survey& survey, const Advice& advice);

/// Writes all kinds of findings, as the tables of doc/check.md.
void printKinds(std::ostream& output);

std::string_view nameOf(Level level);

}  // namespace velk::check

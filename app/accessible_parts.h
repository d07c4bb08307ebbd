#pragma once

/// What a screen reader is told of the window's parts, where the toolkit says something else than
/// the window does: its tab bars bear the current tab's name and no tab is selected, a selector's
/// name is its value, and pictures and lines without a meaning have a role that is read.
namespace accessible_parts {

/// Takes effect for parts that are asked about from now on.
void install();

} // namespace accessible_parts

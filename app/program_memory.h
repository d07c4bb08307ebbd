#pragma once

/// What the program keeps of the system's memory, and what not.
namespace program_memory {

/// Keeps what is freed for what is asked for next: each page that goes back to the system is
/// cleared anew for the next picture, 1 in 6 of the start's page faults. To be called first.
void keepFreed();

/// Asks the system for the heap's next 1.5 MB, which each start takes, in one go. To be called
/// after keepFreed(), or it gives them back.
void makeRoom();

/// Has the system put memory behind that room at once: otherwise the start waits for it at each
/// page. To be done on another processor, therefore. What is in use already stays as it is. Does
/// nothing before Linux 5.14, or where no room was to be had.
void fillRoom();

/// Gives back the large parts of the libraries' files that are only read, mostly what linking asked
/// of them: a tenth of what the program takes then. What is asked for again is there again, from
/// the system's cache of the files; nobody may have written to these parts, as linking may.
void giveBackFiles();

} // namespace program_memory

#pragma once

// From now on what Qt and GLib have to say goes to the log, as warnings, and no further. A display that can't be used,
// which Qt would abort for, ends the program: a line on standard error, exit status 2. Before the QGuiApplication.
void logWordsOfLibraries();

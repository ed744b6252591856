#pragma once
// The main thread's part in the load-balance engine. Its calls wait for the engine's answer.

namespace corvane {

// Opens the home key, starts the engine where it is enabled, and then the thread that carries out
// the commands of clients. *created tells that the home key had to be made.
void StartEngineControl(bool* created);

// In each round: starts an engine that is enabled, or stops it while the service is disabled, which
// leaves the stored wish as it is.
void KeepEngine(bool serviceEnabled);

// The field experiment's second part: the engine runs with weight mode 2.
void StartEngineForPilot();

// Ends the thread, or gives it up after two seconds. The engine goes on until it is released.
void StopEngineControl();

}  // namespace corvane

#pragma once

// Hooks for the tests that run the real program, each honoured only while QUILLORY_TEST_HOOKS=1 is
// set in the environment, so that nobody trips over them by accident:
//   QUILLORY_TEST_CRASH=segv|abort|overflow  crash in a function of that name once the main window is
//                                            up (crashWithSegmentationFault, crashWithAbort,
//                                            crashWithStackOverflow)
//   QUILLORY_TEST_ALT_HELD=1                 behave as if Alt were held while the program starts
namespace TestHooks {

bool enabled();
bool altHeld();
// Crashes as asked by QUILLORY_TEST_CRASH; returns when nothing was asked.
void crashIfAsked();

// Kept out of line and exported, so the crash log's backtrace names them.
[[gnu::noinline]] void crashWithSegmentationFault();
[[gnu::noinline]] void crashWithAbort();
[[gnu::noinline]] int crashWithStackOverflow(int depth);

} // namespace TestHooks

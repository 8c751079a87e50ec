#pragma once

// Does all that can be done before it is known what to play: loads the libraries that nearly every source needs, and
// does what each of them does at its first use. What is not there is not missed. Leaves as little memory as it can,
// since this process may stand ready for long. At the start.
void getReady();

#pragma once

// What a host hears from its player. The struct lies with the player's states, which make most of its calls.
#include "player/states/YMRVideoPlayerDelegate.h"

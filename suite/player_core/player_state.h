#pragma once

// What the player is doing. The values are part of the contract with the suite.
enum class PlayerState : int { STOP = 1, PLAY = 2, PAUSE = 4 };

// What a stream carries; decides how much of it may be queued and which stall rules apply to it.
#pragma once

enum class MuxStreamKind { Video = 0, Audio = 1, Subtitle = 2, Other = 3 };

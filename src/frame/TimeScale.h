#pragma once

/// The range of time that key states cover, which the panel's time slider shows.

/// A key state at this time was added.
void ExtendTimeScale(float time) noexcept;

/// Key states of a group or an object have gone. The slider keeps its range.
void RecomputeTimeScale() noexcept;

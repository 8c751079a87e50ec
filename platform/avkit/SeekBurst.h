#pragma once

// Where a run of left and right presses leads. A plain value; seconds of media time.
//
// The first presses of a run step ten seconds; the longer the run goes on in one direction, the larger its steps, but
// never larger than a twentieth of what can be reached. Turning round starts again with ten seconds, so that an
// overshoot is mended with care.
class SeekBurst {
 public:
  enum class Direction { backward = -1, forward = 1 };

  // Starts at `position`; never leads out of [lower, upper].
  SeekBurst(double position, double lower, double upper);

  void step(Direction direction);
  double target() const { return target_; }

 private:
  double stepLength() const;

  double lower_;
  double upper_;
  double target_;
  Direction direction_ = Direction::forward;
  int stepsInDirection_ = 0;
};

#pragma once

// While it lives, the time that libcurl may take for a whole transfer is this many seconds,
// whatever a program asks for; without a wish of the program there is no limit. One at a time.
class TransferTimeLimit {
 public:
  explicit TransferTimeLimit(long seconds);
  ~TransferTimeLimit();
  TransferTimeLimit(const TransferTimeLimit&) = delete;
  TransferTimeLimit& operator=(const TransferTimeLimit&) = delete;

  // What the program asked for last, in seconds; 0 when it did not.
  long asked_for() const;
};

// The helper's side of the pipes between a program of the family and its helper.
#pragma once

namespace ostrandadmin {

enum Status {
  kDone = 0,     // the program has gone
  kNoPipes = 1,  // there is nobody to serve
  kRefused = 2,  // the pipes are those of another process than the one that started this
};

// Serves the program that started this one until it goes. Commands come to whoever has the pipes'
// names, and what has rights obeys nobody else: pipes whose server isn't the parent process are
// refused.
Status Serve();

}  // namespace ostrandadmin

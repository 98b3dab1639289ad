#pragma once

namespace Tessaline {

/// Guards the process, and the documents it writes, against what it was started with, and has it give back the memory
/// that it no longer needs. The first thing that `main` does.
///
/// - A standard stream that came closed leads nowhere from here on. Otherwise the next file or connection that is
///   opened would be that stream, and what is printed would land in it.
/// - Printing into a pipe that nobody reads any more, and writing more than the limit on the size of files allows, fail
///   like any other write. The system would end the process on the spot, with what is not saved yet.
/// - Children are waited for, also where the parent had said that it does not wait for its own.
void setUpProcess();

} // namespace Tessaline

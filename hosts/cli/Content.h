#pragma once

namespace cli {

// Has the library use the content that lies beside the program, as it is built or installed, unless it has
// settings already. Without such content nothing is done. To be called before the library is opened. Raises
// Failure with kOutput when the settings cannot be written, with kFile when the folder's name is no UTF-8.
void ChooseContent();

}  // namespace cli

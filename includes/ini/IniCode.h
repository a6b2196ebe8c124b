#ifndef INI_INICODE_H
#define INI_INICODE_H

namespace vyini {

/// The failures that the engine's operations return. 0 and positive results are successes; each function says
/// what they mean.
enum IniCode : int {
    IniSeekFailed = -1,        ///< the file cannot be positioned after its byte-order mark
    IniKeyTooLong = -2,        ///< a key leaves no room for a piece of its value within maxLineLength
    IniWideText = -3,          ///< the file is UTF-16 or UTF-32
    IniTempFailed = -5,        ///< the temporary file cannot be created
    IniEmptyName = -6,         ///< the name of a section or key is empty
    IniMemoryFull = -12,       ///< memory is exhausted
    IniTargetRefused = -13,    ///< the target is not writable, or cannot be replaced
    IniNoFile = -22,           ///< the file does not exist, or no path was given
    IniWriteFailed = -28,      ///< a write, flush or close failed
    IniOpenFailed = -5001,     ///< the file exists but cannot be opened for reading
    IniReadFailed = -5002,     ///< a read error
    IniTempNamesTaken = -5003, ///< all 1000 names of the pattern exist
    IniCreateFailed = -5004,   ///< a file cannot be opened for writing
    IniNotANumber = -5022      ///< the value is not an unsigned decimal number of 32 bits
};

} // namespace vyini

#endif

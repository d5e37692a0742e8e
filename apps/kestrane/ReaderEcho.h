#pragma once

/// While it is there, what is written to the standard output is dropped. The reader of VRML97
/// echoes the characters there that it does not know, in the midst of the program's answer.
class ReaderEcho {
  public:
    ReaderEcho();
    ~ReaderEcho();
    ReaderEcho(const ReaderEcho&) = delete;
    ReaderEcho& operator=(const ReaderEcho&) = delete;

  private:
    int m_output;
};

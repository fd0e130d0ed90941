#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Makes JSON documents and damages them; the same seed gives the same ones. All of them are well-formed UTF-8.
class DocumentGenerator {
  public:
    explicit DocumentGenerator(std::uint32_t seed) : m_Random(seed) {}

    // An RFC 8259 document, but now and then with one of the things that parsers disagree about.
    std::string Document();

    // The same with a few characters removed, doubled, replaced or put in.
    std::string Damage(const std::string& document);

    // The text of a string: any character but a NUL.
    std::string Text();

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(m_Random() % limit); }

  private:
    bool OneIn(std::uint32_t count) { return Below(count) == 0; }
    std::string Pick(const std::vector<std::string>& choices);
    std::string Space();
    std::string String();
    std::string Value(int depth);
    std::string Container(int depth);

    std::mt19937 m_Random;
    bool m_Odd = false;  // this document may hold what parsers disagree about
};

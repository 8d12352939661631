#pragma once

// A complex number in double precision, for responses.
struct MComplex {
  double real = 0;
  double imaginary = 0;

  MComplex& operator+=(const MComplex& other) noexcept {
    real += other.real;
    imaginary += other.imaginary;
    return *this;
  }
  MComplex& operator-=(const MComplex& other) noexcept {
    real -= other.real;
    imaginary -= other.imaginary;
    return *this;
  }
  MComplex& operator*=(const MComplex& other) noexcept {
    *this = {real * other.real - imaginary * other.imaginary,
             real * other.imaginary + imaginary * other.real};
    return *this;
  }
  // By Smith's method, which does not overflow in between. Raises "Complex division by zero."
  MComplex& operator/=(const MComplex& other);

  double GetModulus() const noexcept;  // sqrt(re^2 + im^2)
};

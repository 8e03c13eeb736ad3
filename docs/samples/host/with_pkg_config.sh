g++ -std=c++17 read_credit.cpp $(pkg-config --cflags --libs libMVX2Interfaces) -o read_credit

// Whose card it is.
#include "device/exchange.h"

namespace velmorin {

int MVX2Interfaces::getCardId() { return hexadecimal<int>("cardid", "cardId : "); }

const char* MVX2Interfaces::getCardId_CPtr() {
  static char response[128];
  return text("cardid", "cardId : ", response);
}

int MVX2Interfaces::getSerial() { return number<int>("serial", "serial : "); }

const char* MVX2Interfaces::getSerial_CPtr() {
  static char response[128];
  return text("serial", "serial : ", response);
}

unsigned short MVX2Interfaces::getIssuer() { return hexadecimal<unsigned short>("issuer", "issuer : "); }

const char* MVX2Interfaces::getIssuer_CPtr() {
  static char response[128];
  return text("issuer", "issuer : ", response);
}

int MVX2Interfaces::setIssuer(unsigned short issuer) { return set("issuer", issuer, "issuer : "); }

const char* MVX2Interfaces::setIssuer_CPtr(const char* text) {
  static char response[128];
  return setText("issuer", text, "issuer : ", response);
}

int MVX2Interfaces::getAccount() { return number<int>("account", "account : "); }

const char* MVX2Interfaces::getAccount_CPtr() {
  static char response[128];
  return text("account", "account : ", response);
}

int MVX2Interfaces::setAccount(unsigned int account) { return set("account", account, "account : "); }

const char* MVX2Interfaces::setAccount_CPtr(const char* text) {
  static char response[128];
  return setText("account", text, "account : ", response);
}

unsigned short MVX2Interfaces::getPincode() { return number<unsigned short>("pincode", "pincode : "); }

const char* MVX2Interfaces::getPincode_CPtr() {
  static char response[128];
  return text("pincode", "pincode : ", response);
}

int MVX2Interfaces::setPincode(unsigned short pincode) { return set("pincode", pincode, "pincode : "); }

const char* MVX2Interfaces::setPincode_CPtr(const char* text) {
  static char response[128];
  return setText("pincode", text, "pincode : ", response);
}

unsigned short MVX2Interfaces::getDepartment() {
  return number<unsigned short>("department", "department : ");
}

const char* MVX2Interfaces::getDepartment_CPtr() {
  static char response[128];
  return text("department", "department : ", response);
}

int MVX2Interfaces::setDepartment(unsigned short department) {
  return set("department", department, "department : ");
}

const char* MVX2Interfaces::setDepartment_CPtr(const char* text) {
  static char response[128];
  return setText("department", text, "department : ", response);
}

unsigned char MVX2Interfaces::getCategory() { return number<unsigned char>("category", "category : "); }

const char* MVX2Interfaces::getCategory_CPtr() {
  static char response[128];
  return text("category", "category : ", response);
}

int MVX2Interfaces::setCategory(unsigned char category) { return set("category", category, "category : "); }

const char* MVX2Interfaces::setCategory_CPtr(const char* text) {
  static char response[128];
  return setText("category", text, "category : ", response);
}

}  // namespace velmorin

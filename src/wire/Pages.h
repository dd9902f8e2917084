#pragma once
// The names of the service's pages, as the program asks for them and the
// service answers them (the last one only people open). Query parameters are
// not part of a name.
namespace wire {
inline constexpr char kServiceProviderList[] = "GetServiceProviderList.asp";
inline constexpr char kTerminalVendorList[] = "GetTerminalVendorList.asp";
inline constexpr char kTerminalTypeList[] = "GetTerminalTypeList.asp";
inline constexpr char kCountryList[] = "GetCountryList.asp";
inline constexpr char kLogin[] = "Login.asp";
inline constexpr char kAddCustomer[] = "AddCustomer.asp";
inline constexpr char kActivateCustomer[] = "ActivateCustomer.asp";
inline constexpr char kReferFriends[] = "ReferFriends.asp";
inline constexpr char kPostSongData[] = "PostSongData.asp";
inline constexpr char kLookupMobileNumber[] = "LookupMobileNumber.asp";
inline constexpr char kSend[] = "Send.asp";
inline constexpr char kAnnouncementRead[] = "AnnouncementRead.asp";
inline constexpr char kUpdateTID[] = "UpdateTID.asp";
inline constexpr char kDeleteTID[] = "DeleteTID.asp";
inline constexpr char kCheckVersion[] = "CheckVersion.asp";
inline constexpr char kToneUpload[] = "SendT2.asp";
inline constexpr char kCodePicture[] = "qtc/JpegImage.aspx";
inline constexpr char kHelp[] = "help.asp";
inline constexpr char kPassword[] = "password.asp";
inline constexpr char kOutbox[] = "outbox.asp";
inline constexpr char kOperator[] = "operator.asp";
}  // namespace wire

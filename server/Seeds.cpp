#include "Seeds.h"

const char* const kSeedSql = R"(
INSERT INTO countries(id, name, dial_code, charge_text) VALUES
 (1, 'Australia', '61', 'This tone will cost A$2.50 and appear on your phone bill.'),
 (2, 'New Zealand', '64', 'This tone will cost NZ$2.99 and appear on your phone bill.'),
 (3, 'United Kingdom', '44', 'This tone will cost 1.50 GBP and appear on your phone bill.'),
 (4, 'Ireland', '353', 'This tone will cost 2.00 EUR and appear on your phone bill.'),
 (5, 'South Africa', '27', 'This tone will cost R15 and appear on your phone bill.'),
 (6, 'Singapore', '65', 'This tone will cost S$2.50 and appear on your phone bill.');

INSERT INTO providers(id, country_id, name, prefix, min_length, max_length) VALUES
 (101, 1, 'Telstra', '04', 10, 10),
 (102, 1, 'Optus', '04', 10, 10),
 (103, 1, 'Vodafone Australia', '04', 10, 10),
 (104, 1, 'Virgin Mobile Australia', '04', 10, 10),
 (105, 1, '3 Australia', '04', 10, 10),
 (201, 2, 'Vodafone New Zealand', '021', 9, 11),
 (202, 2, 'Telecom New Zealand', '027', 9, 10),
 (203, 2, '2degrees', '022', 9, 10),
 (301, 3, 'O2 UK', '07', 11, 11),
 (302, 3, 'Vodafone UK', '07', 11, 11),
 (303, 3, 'Orange UK', '07', 11, 11),
 (304, 3, 'T-Mobile UK', '07', 11, 11),
 (305, 3, '3 UK', '07', 11, 11),
 (401, 4, 'Vodafone Ireland', '087', 10, 10),
 (402, 4, 'O2 Ireland', '086', 10, 10),
 (403, 4, 'Meteor', '085', 10, 10),
 (501, 5, 'Vodacom', '08', 10, 10),
 (502, 5, 'MTN', '08', 10, 10),
 (601, 6, 'SingTel', '9', 8, 8),
 (602, 6, 'StarHub', '9', 8, 8),
 (603, 6, 'M1', '8', 8, 8);

INSERT INTO vendors(id, name) VALUES
 (1, 'Nokia'), (2, 'Sony Ericsson'), (3, 'Motorola'), (4, 'Samsung'), (5, 'LG'), (6, 'Siemens'), (7, 'Sharp');

INSERT INTO models(vendor_id, name, format) VALUES
 (1, '3220', 'AMR Narrowband'), (1, '6230', 'AMR Narrowband'), (1, '6230i', 'MP3'), (1, '6600', 'AMR Narrowband'),
 (1, '6680', 'AMR Wideband'), (1, '7610', 'AMR Narrowband'), (1, 'N70', 'MP3'), (1, 'N90', 'MP3'),
 (2, 'K700i', 'AMR Narrowband'), (2, 'K750i', 'MP3'), (2, 'W800i', 'MP3'), (2, 'T610', 'AMR Narrowband'),
 (2, 'Z600', 'AMR Narrowband'),
 (3, 'RAZR V3', 'AMR Narrowband'), (3, 'E398', 'MP3'), (3, 'V600', 'AMR Narrowband'), (3, 'C650', 'WAV'),
 (4, 'E700', 'AMR Narrowband'), (4, 'D500', 'MP3'), (4, 'E800', 'AMR Narrowband'), (4, 'X480', 'WAV'),
 (5, 'U8120', 'AMR Narrowband'), (5, 'C1100', 'WAV'), (5, 'F2400', 'AMR Narrowband'),
 (6, 'C65', 'AMR Narrowband'), (6, 'S65', 'MP3'), (6, 'SX1', 'AMR Narrowband'),
 (7, 'GX30', 'AMR Narrowband'), (7, '902', 'MP3');
)";

# Rules count only as library data: what command data states below /RULES changes
# no rule and gives one finding.
use strict;
use warnings;
use feature 'signatures';

use FindBin;
use Test::More;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VELTest;

my $rules = <<'TEXT';
RULES:
  Language Version = 2.0
  OBJECT: PUMP
    Required Parameters = Kind
    PARAMETER: Kind
      Allowed Values = A, B
    END
  END
  OBJECT: TANK
    Optional Parameters = Volume
  END
END
TEXT

my $finding = "/RULES: Rules in command data have no effect; move them to a rule library [rules-in-data]\n";
my $pump    = "PUMP: p\nKind = C\nEND\n";
my $wrong   = "/PUMP:p/Kind: \"C\" is not allowed here; use one of A, B [not-allowed]\n";

# A database whose model has listened from the start, as that of the program has.
sub loaded (@texts) {
    my $api = API->new;
    for my $text ($rules, @texts) {
        my $error = $api->parseVELData(lines($text), $text eq $rules ? 1 : 0);
        die $error if $error;
    }
    return $api;
}

is findings(loaded($pump)->{database}), $wrong, 'what the rules of the library find';

my %stated = (
    'another value'       => "RULES:\nOBJECT: PUMP\nPARAMETER: Kind\nAllowed Values = A, B, C\nEND\nEND\nEND",
    'a field more'        => "RULES:\nOBJECT: PUMP\nFree Parameters = Yes\nRequired Parameters = Size\nEND\nEND",
    'a rule more'         => "RULES:\nOBJECT: VALVE\nEND\nPARAMETER: Kind\nType = Integer\nEND\nEND",
    'another version'     => "RULES:\nLanguage Version = 1.0\nEND\nLANGUAGE:\nVersion = 2.0\nEND",
    'the header alone'    => "RULES:\nEND",
    'a block replaced'    => "&replace RULES:\nOBJECT: TANK\nEND\nEND",
    'a rule replaced'     => "RULES:\n&replace OBJECT: PUMP\nEND\nEND",
);
for my $what (sort keys %stated) {
    my $api      = loaded("$stated{$what}\n$pump");
    my $database = $api->{database};
    is findings($database), "$finding$wrong", "$what changes no rule";
    my $model = VEL::Model->of($database);
    is $model->rules->type('OBJECT', 'VALVE'), undef, '... nor adds one';
    is $model->rules->version, '2.0', '... nor makes it another version';
}

subtest 'the block itself' => sub {
    my $api       = loaded($stated{'another value'}, $pump);
    my $database  = $api->{database};
    my $validator = VEL::Validate->new($database);
    is $validator->validateObject('/RULES') . "\n", $finding, 'can be checked by its path';
    is $validator->validateObject('/RULES/OBJECT:PUMP'), undef, 'nothing in it is reported';
    is $database->isValid('/') & 1, 0, 'the top level is not marked';
    $database->getFormattedVEL('/RULES/OBJECT:PUMP/PARAMETER:Kind', 79, \my @lines);
    like "@lines", qr/Allowed Values = A, B, C/, 'is data like any other';
    is $database->deleteObj('/RULES'), undef, 'can be deleted';
    is findings($database), $wrong, 'and the rules of the library still apply';
};

subtest 'a block that comes later' => sub {
    my $api       = loaded("PUMP: p\nKind = A\nEND");
    my $database  = $api->{database};
    my $validator = VEL::Validate->new($database);
    is findings_left($validator, $database), '', 'all is right';
    is $database->loadVELData(lines($stated{'a rule more'})), undef, 'the data states rules';
    is findings_left($validator, $database), $finding, 'the top level is checked again';
};

subtest 'the statements of a library count, even after those of the data' => sub {
    my $api = API->new;
    is $api->{database}->loadVELData(lines("$stated{'a field more'}\n$pump")), undef, 'first the data';
    is findings($api->{database}), $finding, 'without rules there is no other finding';
    is $api->{database}->loadLibraryData(lines($rules)), undef, 'then the library';
    is findings($api->{database}), $wrong, 'its rules apply, and the block now belongs to the library';
    is $api->{database}->setStringValue('/RULES/OBJECT:PUMP/PARAMETER:Kind/Allowed Values', 'C'), undef,
        'a value of a library may be changed by a program';
    is findings($api->{database}), '', 'which changes the rule';
};

subtest 'a model that comes after the data' => sub {
    my $database = database($rules, "RULES:\nOBJECT: VALVE\nEND\nEND\n$pump");
    is findings($database), "$finding$wrong", 'reads what only libraries have stated';
    is(VEL::Model->of($database)->rules->type('OBJECT', 'VALVE'), undef, 'and no more');
};

subtest 'reading new rules clears all marks' => sub {
    my $api       = api($rules, "PUMP: p\nKind = A\nTANK: t\nVolume = 1\nEND\nEND");
    my $database  = $api->{database};
    my $validator = VEL::Validate->new($database);
    my $marks     = sub { return join '', map { $database->isValid($_) & 1 } '/', '/PUMP:p', '/PUMP:p/TANK:t' };
    my $validate  = sub { $validator->validateObject($_) for all_paths($database); return $marks->() };
    is $validate->(), '111', 'everything is marked';
    $database->loadLibraryData(lines("RULES:\nOBJECT: TANK\nMaximum Count = 5\nEND\nEND"));
    is $marks->(), '000', 'loading a library removes the marks, before any call of the validator';
    is $validate->(), '111', 'everything is marked again';
    $database->loadVELData(lines("RULES:\nOBJECT: TANK\nMaximum Count = 1\nEND\nEND"));
    is $marks->(), '011', 'data does not remove marks, except for the finding at the top level';
    delete local @ENV{qw(ZOT5_VEL_LIBS ZOT5_VEL_LIBSDIR)};
    $api->readLibraries;
    is $marks->(), '000', 'reading the libraries removes them, even if nothing has changed';
};

done_testing;

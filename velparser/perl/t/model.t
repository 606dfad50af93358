# The model: answers about items of the data, and how it follows changes.
use strict;
use warnings;
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VELTest;

my $rules = <<'TEXT';
RULES:
  PARAMETER: Remark
    Editable While Running = Yes
  END
  PARAMETER: Secret
    Expert = Yes
  END
  SINGLETON: FLOW
    Optional Objects = DOMAIN
  END
  SINGLETON: SECRETS
    Expert = Yes
    Free Parameters = Yes
    Required Parameters = Code, Anything
  END
  OBJECT: DOMAIN
    Required Parameters = Kind
    Optional Parameters = Active, Neighbour, Neighbours, Secret, Remark, Fixed
    CASE: Fluid
      If Parameter = Kind
      Is One Of = Fluid
      Required Parameters = Model
      Optional Parameters = Speed
      PARAMETER: Secret
        Expert = No
      END
    END
    PARAMETER: Kind
      Allowed Values = Fluid, Solid
    END
    PARAMETER: Active
      Type = Logical
    END
    PARAMETER: Neighbour
      Allowed Values = None
      Allowed Objects = DOMAIN, SECRETS
    END
    PARAMETER: Fixed
      Editable = No
      Editable While Running = Yes
    END
  END
END
TEXT
my $data = <<'TEXT';
FLOW:
  DOMAIN: Left
    Kind = Fluid
    Secret = 1
    Fixed = 1
    Remark = left
    Own = 1
  END
  DOMAIN: Right
    Kind = Solid
    Secret = 1
  END
  SECRETS:
    Anything = 1
  END
END
TEXT
my $api      = api($rules, $data);
my $database = $api->{database};

sub asked {
    my ($method, $path, @flag) = @_;
    my @answers = ('old');
    my $error = $api->$method($path, \@answers, @flag);
    return $error || join ', ', @answers;
}

subtest 'allowed parameters' => sub {
    is asked('getAllowedParams', '/FLOW/DOMAIN:Left', 0),
        'Kind, Active, Neighbour, Neighbours, Secret, Remark, Fixed, Model, Speed', 'all, in rule order';
    is asked('getAllowedParams', '/FLOW/DOMAIN:Left', 1), 'Model, Active, Neighbour, Neighbours, Speed',
        'those that are not there: first what is required and missing';
    is asked('getAllowedParams', '/FLOW/DOMAIN:Right', 1), 'Active, Neighbour, Neighbours, Remark, Fixed',
        'without those of a case that does not hold';
    is asked('getAllowedParams', '/FLOW/SECRETS', $_), '-1', "free parameters, flag $_" for 0, 1;
    is asked('getAllowedParams', '/FLOW/DOMAIN:Left',  2), 'Model', 'what is required and missing, alone';
    is asked('getAllowedParams', '/FLOW/DOMAIN:Right', 2), '',      'nothing is missing';
    is asked('getAllowedParams', '/FLOW/SECRETS', 2), 'Code', 'what is missing where any name is allowed';
    is asked('getAllowedParams', '/', 2), '', 'nothing is missing at the top';
    is asked('getAllowedParams', '/FLOW', 1), '', 'none';
    is asked('getAllowedParams', '/',     1), '', 'none at the top';
    is asked('getAllowedParams', '/FLOW/DOMAIN:Nowhere', 1),
        'getAllowedParams: there is no object at /FLOW/DOMAIN:Nowhere', 'no such object';
};

subtest 'allowed values' => sub {
    my $at = '/FLOW/DOMAIN:Left';
    is asked('getAllowedParamStrings', "$at/Kind"),      'Fluid, Solid', 'the values of the rule';
    is asked('getAllowedParamStrings', "$at/Active"),    'Yes, No',      'a logical';
    is asked('getAllowedParamStrings', "$at/Neighbour"), 'None, Left, Right, SECRETS', 'values and objects';
    is asked('getAllowedParamStrings', "$at/Own"),       '',             'nothing without a rule';
    is asked('getAllowedParamStrings', '/NOWHERE/Own'),  '',             'and nothing for an item that does not exist';
    $database->createObject('/FLOW/DOMAIN:Middle', 0);
    is asked('getAllowedParamStrings', "$at/Neighbour"), 'None, Left, Right, Middle, SECRETS', 'a new object';
    $database->deleteObj('/FLOW/DOMAIN:Middle');
    is asked('getAllowedParamStrings', "$at/Neighbour"), 'None, Left, Right, SECRETS', 'the new object was removed again';
    $database->loadLibraryData(lines("DOMAIN: Stock\nEND"));
    is asked('getAllowedParamStrings', "$at/Neighbour"), 'None, Left, Right, Stock, SECRETS', 'library objects';
};

# An integer and not a text that looks like one: the program reads it as such.
sub is_integer_value {
    my ($got, $expected, $name) = @_;
    require B;
    ok((B::svref_2object(\$got)->FLAGS & B::SVf_IOK()) && $got == $expected, $name)
        or diag "got " . ($got // 'nothing');
    return;
}

subtest 'expert items' => sub {
    my %expert = (
        '/FLOW' => 0, '/FLOW/SECRETS' => 1, '/FLOW/SECRETS/Anything' => 0, '/FLOW/DOMAIN:Left' => 0,
        '/FLOW/DOMAIN:Left/Secret' => 0, '/FLOW/DOMAIN:Right/Secret' => 1, '/FLOW/DOMAIN:Left/Own' => 0,
        '/NOWHERE' => 0, '/NOWHERE/Secret' => 1, '/' => 0,
    );
    is_integer_value($api->isItemExpert($_), $expert{$_}, "$_ $expert{$_}") for sort keys %expert;
};

subtest 'editable parameters' => sub {
    my %editable = (
        Kind => [ 1, 0 ], Secret => [ 1, 0 ], Remark => [ 1, 1 ], Own => [ 1, 0 ], Fixed => [ 0, 0 ],
    );
    for my $name (sort keys %editable) {
        my $path = "/FLOW/DOMAIN:Left/$name";
        is_integer_value($api->isParamEditable($path), $editable{$name}[0], "$name as usual");
        $database->setValidationLevel(2);
        is_integer_value($api->isParamEditable($path), $editable{$name}[1], "$name in safe mode");
        $database->setValidationLevel(0);
    }
    is_integer_value($api->isParamEditable('/FLOW/DOMAIN:Left'), 0, 'an object is not');
};

subtest 'paths in any form' => sub {
    is $api->isItemExpert(' /FLOW//DOMAIN : Right/Secret '), 1, 'unnecessary spaces and slashes';
    is $api->isItemExpert('/FLOW/DOMAIN:Left/../DOMAIN:Right/Secret'), 1, 'a path with a step to the parent';
    $database->pushPath('/FLOW/DOMAIN:Right');
    is $api->isItemExpert('Secret'), 1, 'relative to the current path';
    is asked('getAllowedParams', '.', 1), 'Active, Neighbour, Neighbours, Remark, Fixed', 'the current object';
    $database->popPath;
    is $database->getCurrentPath, '/', 'the current path is as it was';
};

subtest 'rules are compiled again only when they have changed' => sub {
    my $model = VEL::Model->of($database);
    my $compiled = $model->compiled;
    $database->setStringValue('/FLOW/DOMAIN:Left/Kind', 'Solid');
    $database->createObject('/FLOW/DOMAIN:Fourth', 0);
    $api->isItemExpert('/FLOW/DOMAIN:Left/Secret');
    is $model->compiled, $compiled, 'not for a change of the data';
    $database->loadLibraryData(lines("RULES:\nOBJECT: DOMAIN\nExpert = Yes\nEND\nEND"));
    is $api->isItemExpert('/FLOW/DOMAIN:Left'), 1, 'new library data has an effect at once';
    is $model->compiled, $compiled + 1, 'compiled once';
    $database->setStringValue('/RULES/OBJECT:DOMAIN/Expert', 'No');
    is $api->isItemExpert('/FLOW/DOMAIN:Left'), 0, 'and so does a changed rule';
};

subtest 'one model for each database' => sub {
    my $model = VEL::Model->of($database);
    is $model, VEL::Model->of($database), 'one model for the same database';
    isnt $model, VEL::Model->of(VEL::Parser::Lite::NEW()), 'another model for another database';
    no warnings 'redefine';
    local *VEL::Parser::Lite::setValidationLevel = sub { die "written\n" };
    my $new = VEL::Parser::Lite::NEW();
    ok eval { VEL::Model->of($new) }, 'telling them apart writes nothing into the database' or diag $@;
};

subtest 'a model keeps nothing alive' => sub {
    my $gone  = 0;
    {
        my $short = API->new;
        my $watch = bless [ \$gone ], 'Watch';
        $short->{model}{watch} = $watch;
        $short->isItemExpert('/X');
    }
    is $gone, 1, 'the model is freed with its last user';
};

{

    package Watch;
    sub DESTROY { ${ $_[0][0] }++; return }
}

subtest 'the model still sees changes after the handlers of the database were cleared' => sub {
    my $api      = api($rules, $data);
    my $database = $api->{database};
    my $model    = VEL::Model->of($database);
    my @heard;
    my $values = sub { $api->getAllowedParamStrings('/FLOW/DOMAIN:Left/Neighbour', \my @values); return "@values" };
    is $values->(), 'None Left Right SECRETS', 'the existing objects';
    for my $round (1, 2) {
        $database->addChangeHandler(sub { push @heard, @_; return });
        $database->clearChangeHandlers;
        $database->createObject("/FLOW/DOMAIN:New $round", 0);
        like $values->(), qr/ New $round/, "round $round: an object that comes is seen";
        is scalar @heard, 0, '... and the handler that was cleared is not called';
    }
    my $compiled = $model->compiled;
    $database->loadLibraryData([ 'RULES:', 'OBJECT: DOMAIN', 'Expert = Yes', 'END', 'END' ]);
    is $api->isItemExpert('/FLOW/DOMAIN:Left'), 1, 'new rules are seen';
    is $model->compiled, $compiled + 1, '... when they change, and not at each question';
    $database->addChangeHandler(sub { $database->clearChangeHandlers if $_[1] == 1; return });
    $database->createObject('/FLOW/DOMAIN:Cleared', 0);
    $database->createObject('/FLOW/DOMAIN:Last', 0);
    like $values->(), qr/ Cleared Last\b/, 'even if a handler clears them';
};

subtest 'a destroyed database does not disturb others' => sub {
    my $gone = api($rules, $data);
    is $gone->{database}->DESTROY, undef, 'destroyed while its API is alive';
    my $new = eval { API->new } // die $@;
    isnt $new->{model}, $gone->{model}, 'a new API has a model of its own';
    ok !$new->parseVELData([ 'A: a', 'END' ], 0),
        'and a database that works';
    is(API->new($new->{database})->{model}, $new->{model}, 'shared by all callers');
};

subtest 'databases with the same libraries share their rules' => sub {
    my ($one, $same, $other) = map { VEL::Parser::Lite::NEW() } 1 .. 3;
    $_->loadLibraryData([ split /\n/, $rules ]) for $one, $same, $other;
    $other->loadLibraryData([ 'RULES:', 'PARAMETER: Remark', 'Expert = Yes', 'END', 'END' ]);
    my ($first, $second, $third) = map { VEL::Model->of($_) } $one, $same, $other;
    ok $first->rules == $second->rules, 'the same libraries';
    ok $first->rules != $third->rules, 'others';
    $same->loadLibraryData([ 'RULES:', 'PARAMETER: Remark', 'Expert = Yes', 'END', 'END' ]);
    ok $second->rules != $first->rules, 'one reads another library';
    ok $second->rules == $third->rules, '... which the third database has read too';
    is $first->is_expert('/FLOW/Remark'), 0, 'the first is as it was';
};

done_testing;

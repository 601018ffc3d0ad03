<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:import href="lib/base.xsl"/>
<xsl:variable name="offset" select="2"/>
<xsl:attribute-set name="page"><xsl:attribute name="id"><xsl:value-of select="@id"/></xsl:attribute></xsl:attribute-set>
<xsl:include href="lib/marks.xsl"/>
<xsl:template match="doc"><page xsl:use-attribute-sets="page"><xsl:apply-templates/></page></xsl:template>
<xsl:template match="head"><h><xsl:apply-templates/></h></xsl:template>
<xsl:template match="para" priority="-5"><p>[<xsl:apply-imports/>]</p></xsl:template>
<xsl:template match="sum"><q><xsl:call-template name="total"><xsl:with-param name="n" select="."/></xsl:call-template></q></xsl:template>
</xsl:stylesheet>
